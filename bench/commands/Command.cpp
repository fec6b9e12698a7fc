#include "bench/commands/Command.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

CommandUse RunCommand(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    CommandUse use;
    pid_t child = 0;
    const auto start = std::chrono::steady_clock::now();
    const int spawned = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage{};
    if (spawned != 0 || wait4(child, &status, 0, &usage) != child) return use;
    use.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    use.processor = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    use.peak = static_cast<double>(usage.ru_maxrss) / 1024;
    use.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return use;
}

bool HasProgram(const std::string& name) {
    return RunCommand({"sh", "-c", "command -v \"$1\"", "sh", name}).succeeded;
}
