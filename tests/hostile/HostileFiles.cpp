// Gives hostile files to the module and to the C library, each in a child of its own, and holds every
// operation to the limits that docs/limits.md tells. Prints what came of each:
//
//   hostile_files MODULE [MANY [PART OF A NAME]]
//
// MANY is how many there are of what can be counted, a million unless it is told.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tests/hostile/HostileFile.h"
#include "tests/hostile/Measured.h"
#include "tests/hostile/Operations.h"

namespace {

constexpr double kMostMilliseconds = 100;
constexpr int64_t kMostBytes = int64_t{16} << 20;
constexpr unsigned kHangSeconds = 20;
constexpr int kTries = 3;  // the machine has other work, too

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kJudges = false;  // they take time and memory of their own
#else
constexpr bool kJudges = true;
#endif

// A folder in memory, gone at the end.
class Folder {
public:
    Folder() {
        const std::filesystem::path memory = "/dev/shm";
        m_path = (access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path()) /
                 ("hostile_files_" + std::to_string(getpid()));
        std::filesystem::create_directory(m_path);
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    std::string Of(const std::string& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

// Filled by the child, read by its parent.
struct Outcome {
    bool begun, done;
    double milliseconds;
    int64_t bytes;
    char text[96];
};
constexpr size_t kMostOperations = 8;

void RunAll(const Codec& codec, std::span<const Operation> operations, const std::string& path,
            const std::string& copy, Outcome* outcomes) {
    for (const Operation& operation : operations) {
        Outcome& outcome = *outcomes++;
        if (operation.writes)
            std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing);
        outcome.begun = true;
        const Measured measured;
        const std::string text = operation.run(codec, operation.writes ? copy : path);
        outcome.milliseconds = measured.Milliseconds();
        outcome.bytes = measured.Bytes();
        std::snprintf(outcome.text, sizeof outcome.text, "%s", text.c_str());
        outcome.done = true;
    }
}

class Runner {
public:
    explicit Runner(const char* modulePath)
        : m_codec(modulePath),
          m_outcomes(static_cast<Outcome*>(mmap(nullptr, sizeof(Outcome) * kMostOperations,
                                                PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        if (m_outcomes == MAP_FAILED) throw std::runtime_error("no memory");
    }
    ~Runner() { munmap(m_outcomes, sizeof(Outcome) * kMostOperations); }

    // Loads what is loaded once, so that no file is charged with it.
    void WarmUp(const HostileFile& file, std::span<const Operation> operations) {
        const std::string path = Put(file);
        RunAll(m_codec, operations, path, m_folder.Of("copy" + file.extension), m_outcomes);
    }

    bool Run(const HostileFile& file, std::span<const Operation> operations) {
        const std::string path = Put(file);
        bool holds = false;
        for (int tries = 0; tries < kTries && !holds; ++tries) {
            if (!RunInChild(path, file.extension, operations)) break;
            holds = !kJudges || Holds(file, operations);
        }
        Print(file, operations);
        std::filesystem::remove(path);
        return holds;
    }

private:
    std::string Put(const HostileFile& file) const {
        const std::string path = m_folder.Of("file" + file.extension);
        std::ofstream(path, std::ios::binary) << file.make();
        return path;
    }

    bool RunInChild(const std::string& path, const std::string& extension,
                    std::span<const Operation> operations) {
        std::memset(m_outcomes, 0, sizeof(Outcome) * kMostOperations);
        std::fflush(stdout);
        if (!kJudges) {  // a child takes longer than what it is to do, and the sanitizer names the place
            alarm(kHangSeconds);
            RunAll(m_codec, operations, path, m_folder.Of("copy" + extension), m_outcomes);
            return true;
        }
        const pid_t child = fork();
        if (child == 0) {
            alarm(kHangSeconds);
            RunAll(m_codec, operations, path, m_folder.Of("copy" + extension), m_outcomes);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    static bool IsWithin(const Outcome& outcome, const HostileFile& file, const Operation& operation) {
        // What is kept takes time as well: as long again for each so many bytes.
        const auto kept = static_cast<int64_t>(file.kept * operation.copies);
        const double share = 1 + static_cast<double>(file.kept) / static_cast<double>(kMostBytes);
        return outcome.milliseconds <= kMostMilliseconds * operation.steps * share * file.slower &&
               outcome.bytes <= kMostBytes + kept;
    }
    bool Holds(const HostileFile& file, std::span<const Operation> operations) const {
        for (size_t i = 0; i < operations.size(); ++i)
            if (!IsWithin(m_outcomes[i], file, operations[i])) return false;
        return true;
    }

    void Print(const HostileFile& file, std::span<const Operation> operations) const {
        for (size_t i = 0; i < operations.size(); ++i) {
            const Outcome& outcome = m_outcomes[i];
            if (!outcome.begun) continue;
            const char* const verdict = !outcome.done                            ? "ENDED"
                                        : IsWithin(outcome, file, operations[i]) ? ""
                                                                                 : "BEYOND";
            std::printf("%-6s %7.1f ms %7.1f MiB  %-13s %s%s: %s\n", verdict, outcome.milliseconds,
                        static_cast<double>(outcome.bytes) / (1 << 20), operations[i].name, file.name.c_str(),
                        file.extension.c_str(), outcome.text);
        }
    }

    Codec m_codec;
    Folder m_folder;
    Outcome* const m_outcomes;
};

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) return 2;
    const size_t many = count > 2 ? std::strtoul(arguments[2], nullptr, 10) : kAll;
    const std::string part = count > 3 ? arguments[3] : "";
    struct Part {
        HostileFiles files;
        std::span<const Operation> operations;
    };
    const Part parts[] = {{HostileWaves(many), AudioOperations()},
                          {HostileAiffs(many), AudioOperations()},
                          {HostilePictures(many), PictureOperations()}};
    Runner runner(arguments[1]);
    for (const auto& [files, operations] : parts)
        for (const HostileFile& file : files)
            if (file.name.find("nothing wrong") != std::string::npos) runner.WarmUp(file, operations);
    size_t run = 0;
    size_t failed = 0;
    for (const auto& [files, operations] : parts) {
        for (const HostileFile& file : files) {
            if ((file.name + file.extension).find(part) == std::string::npos) continue;
            ++run;
            failed += !runner.Run(file, operations);
        }
    }
    std::printf("%zu files, %zu beyond the limits\n", run, failed);
    return failed == 0 && run != 0 ? 0 : 1;
}
