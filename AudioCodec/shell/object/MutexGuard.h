// A scoped lock on a mutex handle. Where the wait fails, for a null handle above all, it counts as held all
// the same: its owner then goes on without mutual exclusion.
#pragma once

#include "platform/sync/Waitable.h"

class MutexGuard {
public:
    explicit MutexGuard(HANDLE mutex) : m_mutex(mutex) {
        constexpr DWORD kPatience = 20;  // ms; then it asks again
        while (WaitForSingleObject(m_mutex, kPatience) == WAIT_TIMEOUT) {
        }
        m_held = true;
    }
    ~MutexGuard() { Release(); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

    // Gives the mutex back before the end of the scope.
    void Release() {
        if (m_held) ReleaseMutex(m_mutex);
        m_held = false;
    }

private:
    HANDLE m_mutex;
    bool m_held = false;
};
