// An event of one owner, without a name, at first not set. Any thread.
#pragma once

#include <new>

#include "platform/base/UniqueHandle.h"
#include "platform/sync/Waitable.h"

class CEventObject {
public:
    enum class ResetKind { Manual, Automatic };

    // Throws std::bad_alloc if there can be none.
    explicit CEventObject(ResetKind kind)
        : m_event(CreateEventA(nullptr, kind == ResetKind::Manual, FALSE, nullptr)) {
        if (!m_event) throw std::bad_alloc();
    }

    void Set() { SetEvent(m_event.get()); }
    void Reset() { ResetEvent(m_event.get()); }
    // Whether it was set within `milliseconds`; INFINITE waits without end.
    bool Wait(DWORD milliseconds = INFINITE) {
        return WaitForSingleObject(m_event.get(), milliseconds) == WAIT_OBJECT_0;
    }
    // For waits for several objects; stays the event's.
    HANDLE Handle() const { return m_event.get(); }

private:
    UniqueHandle m_event;
};
