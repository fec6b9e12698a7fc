// What a thread can wait for: the wait itself, for every kind of object. What "to be had" means is the
// kind's.
#pragma once

#include <condition_variable>
#include <mutex>

#include "platform/base/HandleObject.h"

class WaitableObject : public HandleObject {
public:
    static constexpr uint32_t kKind = kWaitable;
    explicit WaitableObject(uint32_t kinds) : HandleObject(kinds | kKind) {}

    // WAIT_OBJECT_0 with the object taken, or WAIT_TIMEOUT; 0 milliseconds try once, INFINITE never ends.
    DWORD Wait(DWORD milliseconds);

protected:
    // Takes the object for the calling thread if it is to be had. Called with m_lock held.
    virtual bool TryTake() = 0;

    std::mutex m_lock;                  // guards the state of the kind; held for moments only
    std::condition_variable m_changed;  // told whenever the object may have become to be had
};
