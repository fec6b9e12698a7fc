// std::mutex with what it guards checked at compile time where the compiler can. For fields that one lock
// guards as a whole: who waits for conditions, or locks again what the thread has locked, takes the
// standard's own.
#pragma once

#include <mutex>

#include "platform/sync/ThreadSafety.h"

class VL_CAPABILITY("mutex") Mutex {
public:
    void Lock() VL_ACQUIRE() { m_mutex.lock(); }
    void Unlock() VL_RELEASE() { m_mutex.unlock(); }

private:
    std::mutex m_mutex;
};

// Holds a mutex for a scope.
class VL_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) VL_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~MutexLock() VL_RELEASE() { m_mutex.Unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& m_mutex;
};
