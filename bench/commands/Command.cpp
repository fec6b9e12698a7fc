#include "bench/commands/Command.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>

namespace {

// 0 where it can't be started.
pid_t Start(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return spawned == 0 ? child : 0;
}

bool HasSucceeded(int status) { return WIFEXITED(status) && WEXITSTATUS(status) == 0; }

// In MiB; 0 once it has ended.
double HighWater(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
    return 0;
}

}  // namespace

CommandUse RunCommand(const std::vector<std::string>& words) {
    CommandUse use;
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = Start(words);
    int status = 0;
    rusage usage{};
    if (child == 0 || wait4(child, &status, 0, &usage) != child) return use;
    use.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    use.processor = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    use.succeeded = HasSucceeded(status);
    return use;
}

double PeakMemory(const std::vector<std::string>& words) {
    const pid_t child = Start(words);
    if (child == 0) return 0;
    double peak = 0;
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        peak = std::max(peak, HighWater(child));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return HasSucceeded(status) ? peak : 0;
}

bool HasProgram(const std::string& name) {
    return RunCommand({"sh", "-c", "command -v \"$1\"", "sh", name}).succeeded;
}
