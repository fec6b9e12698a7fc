#include "host/TemporaryCleanup.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace TemporaryCleanup {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Read by the signal handler, changed only while the signals are held off. Empty: no file.
char g_path[PATH_MAX];

void SetPath(const char* path) { std::snprintf(g_path, sizeof g_path, "%s", path); }

class SignalsHeldOff {
public:
    SignalsHeldOff() {
        sigset_t set;
        sigemptyset(&set);
        for (const int number : kSignals) sigaddset(&set, number);
        pthread_sigmask(SIG_BLOCK, &set, &m_before);
    }
    SignalsHeldOff(const SignalsHeldOff&) = delete;
    SignalsHeldOff& operator=(const SignalsHeldOff&) = delete;
    ~SignalsHeldOff() {
        const int error = errno;
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
        errno = error;
    }

private:
    sigset_t m_before{};
};

// Only calls that are allowed in a handler. The signal comes again and ends the process by its own way, so
// that the caller sees which one it was.
extern "C" void RemoveAndDie(int number) {
    if (g_path[0] != '\0') unlink(g_path);
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void WatchSignals() {
    struct sigaction action {};
    action.sa_handler = RemoveAndDie;
    for (const int number : kSignals) {
        struct sigaction before {};
        const bool ignored = sigaction(number, nullptr, &before) == 0 && before.sa_handler == SIG_IGN;
        if (!ignored) sigaction(number, &action, nullptr);  // what the caller ignores (nohup) stays ignored
    }
}

}  // namespace

int Create(std::string& path) {
    if (path.size() >= sizeof g_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    const SignalsHeldOff held;
    WatchSignals();
    const int descriptor = mkostemp(path.data(), O_CLOEXEC);
    if (descriptor >= 0) SetPath(path.c_str());
    return descriptor;
}

bool Rename(const std::string& path, const std::string& target) {
    const SignalsHeldOff held;
    if (rename(path.c_str(), target.c_str()) != 0) return false;
    SetPath("");
    return true;
}

void Remove(const std::string& path) noexcept {
    const SignalsHeldOff held;
    unlink(path.c_str());
    SetPath("");
}

}  // namespace TemporaryCleanup
