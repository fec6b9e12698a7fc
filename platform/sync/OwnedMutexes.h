// Finds the mutexes that a thread leaves behind when it ends. A thread's own count tells whether there are
// any, so that taking and giving back cost nothing that threads share; only a thread that ends with a mutex
// looks through all that there are.
#pragma once

#include "platform/sync/MutexObject.h"
#include "platform/sync/posix/ThreadEndCount.h"

class OwnedMutexes {
public:
    // One for the process, built by the first mutex.
    static OwnedMutexes& Instance();
    OwnedMutexes(const OwnedMutexes&) = delete;
    OwnedMutexes& operator=(const OwnedMutexes&) = delete;

    // All mutexes are known here from their first to their last moment.
    void Add(MutexObject& mutex);
    void Remove(MutexObject& mutex);

    // The calling thread has become the owner of one mutex more, or less.
    void Count(int change) const { m_counts.Add(change); }

private:
    OwnedMutexes() = default;
    static void AtThreadEnd(void* count);

    Mutex m_lock;  // taken before the lock of any mutex
    MutexObject* m_first VL_GUARDED_BY(m_lock) = nullptr;
    // Without counts a mutex stays with a thread that ended. The last: no thread's end comes in after it.
    const ThreadEndCount m_counts{&AtThreadEnd};
};
