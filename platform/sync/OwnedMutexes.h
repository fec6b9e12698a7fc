// Finds the mutexes that a thread leaves behind when it ends. A thread's own count tells whether there are
// any, so that taking and giving back cost nothing that threads share; only a thread that ends with a mutex
// looks through all that there are.
//
// The count is a value of the thread that the system hands to a function when the thread ends, and not a
// thread_local with a destructor, which would keep this library mapped.
#pragma once

#include <pthread.h>

#include <mutex>

#include "platform/sync/MutexObject.h"

class OwnedMutexes {
public:
    // One for the process, built by the first mutex.
    static OwnedMutexes& Instance();
    ~OwnedMutexes();
    OwnedMutexes(const OwnedMutexes&) = delete;
    OwnedMutexes& operator=(const OwnedMutexes&) = delete;

    // All mutexes are known here from their first to their last moment.
    void Add(MutexObject& mutex);
    void Remove(MutexObject& mutex);

    // The calling thread has become the owner of one mutex more, or less.
    void Count(int change) const;

private:
    OwnedMutexes();
    static void AtThreadEnd(void* count);

    pthread_key_t m_key = 0;         // the count is the pointer's value: null calls nobody
    std::mutex m_lock;               // taken before the lock of any mutex
    MutexObject* m_first = nullptr;  // under m_lock
};
