// A critical section that lives and dies with its owner, for std::lock_guard.
#pragma once

#include "platform/sync/CriticalSection.h"

class RecursiveLock {
public:
    RecursiveLock() { InitializeCriticalSection(&m_section); }  // throws std::bad_alloc
    ~RecursiveLock() { DeleteCriticalSection(&m_section); }
    RecursiveLock(const RecursiveLock&) = delete;
    RecursiveLock& operator=(const RecursiveLock&) = delete;

    // Named as the standard guards call them.
    void lock() { EnterCriticalSection(&m_section); }
    void unlock() { LeaveCriticalSection(&m_section); }

private:
    CRITICAL_SECTION m_section{};
};
