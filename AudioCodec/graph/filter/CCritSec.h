// The lock of the filters: recursive, with what it guards checked at compile time where the compiler can.
#pragma once

#include "AudioCodec/shell/object/RecursiveLock.h"
#include "platform/sync/ThreadSafety.h"

class VL_CAPABILITY("lock") CCritSec {
public:
    CCritSec() = default;  // throws std::bad_alloc

    void Lock() VL_ACQUIRE() { m_lock.lock(); }
    // Once for each Lock, by the thread that locked.
    void Unlock() VL_RELEASE() { m_lock.unlock(); }

private:
    RecursiveLock m_lock;
};

// Holds a lock for a scope.
class VL_SCOPED_CAPABILITY CritSecGuard {
public:
    explicit CritSecGuard(CCritSec& lock) VL_ACQUIRE(lock) : m_lock(lock) { m_lock.Lock(); }
    ~CritSecGuard() VL_RELEASE() { m_lock.Unlock(); }
    CritSecGuard(const CritSecGuard&) = delete;
    CritSecGuard& operator=(const CritSecGuard&) = delete;

private:
    CCritSec& m_lock;
};
