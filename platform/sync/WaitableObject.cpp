#include "platform/sync/WaitableObject.h"

#include <chrono>

#include "platform/sync/Waitable.h"

DWORD WaitableObject::Wait(DWORD milliseconds) {
    std::unique_lock lock(m_lock);
    const auto taken = [this] { return TryTake(); };
    if (milliseconds == INFINITE) {
        m_changed.wait(lock, taken);
        return WAIT_OBJECT_0;
    }
    return m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds), taken) ? WAIT_OBJECT_0
                                                                                    : WAIT_TIMEOUT;
}
