#include "host/files/Signals.h"

#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <system_error>
#include <thread>

#include "capi/vlwav_more.h"
#include "host/base/ExitCodes.h"
#include "host/base/Failure.h"
#include "host/terminal/Report.h"

namespace Signals {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

[[noreturn]] void End(int number) {
    vlw_remove_temporaries();
    Report::Complain("", fmt::format("Interrupted by SIG{}; what was not whole yet has been removed.",
                                     sigabbrev_np(number)));
    // As the signal ends a program that doesn't watch for it, so that a shell stops its loop too.
    std::signal(number, SIG_DFL);
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, number);
    kill(getpid(), number);
    pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
    _exit(EXIT_FAILED);
}

}  // namespace

void Watch() {
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : kSignals) {
        struct sigaction now {};
        if (sigaction(number, nullptr, &now) == 0 && now.sa_handler != SIG_IGN) sigaddset(&watched, number);
    }
    pthread_sigmask(SIG_BLOCK, &watched, nullptr);  // for the threads of later too
    try {
        std::thread([watched] {
            int number = 0;
            if (sigwait(&watched, &number) == 0) End(number);
        }).detach();
    } catch (const std::system_error&) {
        throw Failure("No thread can be started: there is too little memory, or there are too many of them.");
    }
}

}  // namespace Signals
