#include "platform/sync/posix/ForkGate.h"

#include <pthread.h>

#include <atomic>
#include <ctime>

namespace {

constexpr time_t kPatience = 2;  // seconds that a fork waits
constexpr long kPause = 50'000;  // nanoseconds between two looks
constexpr int kForkIsAlone = -1;

// How many threads are inside, or that a fork is. Those who come are kept out by a fork that has the gate
// alone, never by one that waits for it, so a pass never waits for another thread's. No lock of the system's:
// nobody holds it while he takes others, but for the moment of the fork itself.
std::atomic<int> s_inside = 0;
thread_local int t_entered = 0;     // how often this thread is inside
thread_local bool t_alone = false;  // this thread forks, and nobody is inside

void Pause() {
    const timespec pause = {0, kPause};
    nanosleep(&pause, nullptr);
}

bool TryToBeAlone() {
    int nobody = 0;
    return s_inside.compare_exchange_strong(nobody, kForkIsAlone, std::memory_order_acq_rel);
}

void BeforeFork() {
    // It would wait for itself.
    if (t_entered != 0) return;
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const time_t end = now.tv_sec + kPatience;
    while (!(t_alone = TryToBeAlone()) && now.tv_sec < end) {
        Pause();
        clock_gettime(CLOCK_MONOTONIC, &now);
    }
}

void InParent() {
    if (t_alone) s_inside.store(0, std::memory_order_release);
    t_alone = false;
}

// Threads that were inside don't exist here: they will never leave.
void InChild() {
    t_alone = false;
    s_inside.store(t_entered != 0 ? 1 : 0, std::memory_order_release);
}

[[maybe_unused]] const int s_registered = pthread_atfork(&BeforeFork, &InParent, &InChild);

}  // namespace

void ForkGate::Enter() {
    if (t_entered++ != 0) return;
    for (int inside = s_inside.load(std::memory_order_relaxed);;) {
        if (inside == kForkIsAlone) {
            Pause();
            inside = s_inside.load(std::memory_order_relaxed);
        } else if (s_inside.compare_exchange_weak(inside, inside + 1, std::memory_order_acquire)) {
            return;
        }
    }
}

void ForkGate::Leave() {
    if (--t_entered == 0) s_inside.fetch_sub(1, std::memory_order_release);
}
