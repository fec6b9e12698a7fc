#include "host/TemporaryCleanup.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <set>
#include <thread>

#include "host/ExitCodes.h"
#include "host/Failure.h"
#include "host/Report.h"
#include "platform/file/TempFolder.h"

namespace TemporaryCleanup {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Held while a name and its file could disagree.
struct Registry {
    std::mutex lock;
    std::set<std::string> paths;
};

// Never destroyed: the watching thread may need it while the process ends.
Registry& Temporaries() {
    static auto& registry = *new Registry;
    return registry;
}

// The lock stays held, so that nothing is created or renamed any more.
[[noreturn]] void RemoveAllAndEnd(int number) {
    Temporaries().lock.lock();
    for (const std::string& path : Temporaries().paths) unlink(path.c_str());
    Report::Complain("", fmt::format("Interrupted by SIG{}; what was not whole yet has been removed.",
                                     sigabbrev_np(number)));
    _exit(EXIT_FAILED);
}

// Some file systems can't rename without replacing; there the name is made as a second link.
bool RenameToNewName(const char* path, const char* target) {
    if (renameat2(AT_FDCWD, path, AT_FDCWD, target, RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    return link(path, target) == 0 && unlink(path) == 0;
}

}  // namespace

void WatchSignals() {
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : kSignals) {
        struct sigaction now {};
        if (sigaction(number, nullptr, &now) == 0 && now.sa_handler != SIG_IGN) sigaddset(&watched, number);
    }
    pthread_sigmask(SIG_BLOCK, &watched, nullptr);  // for the threads of later too
    std::thread([watched] {
        int number = 0;
        if (sigwait(&watched, &number) == 0) RemoveAllAndEnd(number);
    }).detach();
}

std::string NewPath() { return TempFolderPath() + "vlwav-XXXXXX"; }

void FailWriting() {
    throw Failure("The folder for temporary files can't be written; set TMPDIR to another one.");
}

int Create(std::string& path) {
    const std::lock_guard held(Temporaries().lock);
    const int descriptor = mkostemp(path.data(), O_CLOEXEC);
    if (descriptor >= 0) Temporaries().paths.insert(path);
    return descriptor;
}

bool Rename(const std::string& path, const std::string& target, bool replace) {
    const std::lock_guard held(Temporaries().lock);
    const bool done =
        replace ? rename(path.c_str(), target.c_str()) == 0 : RenameToNewName(path.c_str(), target.c_str());
    if (done) Temporaries().paths.erase(path);
    return done;
}

void Remove(const std::string& path) noexcept {
    const std::lock_guard held(Temporaries().lock);
    unlink(path.c_str());
    Temporaries().paths.erase(path);
}

}  // namespace TemporaryCleanup
