#include "platform/sync/posix/ForkGate.h"

#include <pthread.h>

#include <ctime>

namespace {

constexpr time_t kPatience = 2;  // seconds that a fork waits

// Threads inside share it, a fork has it alone. Those inside aren't kept out by a fork that waits, so a pass
// never waits for another thread's. Not destroyed: passes are taken until the last static object has gone.
pthread_rwlock_t s_gate = PTHREAD_RWLOCK_INITIALIZER;
thread_local int t_entered = 0;     // how often this thread is inside
thread_local bool t_alone = false;  // this thread forks, and nobody is inside

void BeforeFork() {
    // It would wait for itself.
    if (t_entered != 0) return;
    timespec end = {};
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += kPatience;
    t_alone = pthread_rwlock_timedwrlock(&s_gate, &end) == 0;
}

void InParent() {
    if (t_alone) pthread_rwlock_unlock(&s_gate);
    t_alone = false;
}

// Threads that were inside don't exist here: they will never leave.
void InChild() {
    t_alone = false;
    s_gate = PTHREAD_RWLOCK_INITIALIZER;
    if (t_entered != 0) pthread_rwlock_rdlock(&s_gate);
}

[[maybe_unused]] const int s_registered = pthread_atfork(&BeforeFork, &InParent, &InChild);

}  // namespace

void ForkGate::Enter() {
    if (t_entered++ == 0) pthread_rwlock_rdlock(&s_gate);
}

void ForkGate::Leave() {
    if (--t_entered == 0) pthread_rwlock_unlock(&s_gate);
}
