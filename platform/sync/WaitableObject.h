// What a thread can wait for: the wait itself, for every kind of object and for several objects at once. When
// one "can be taken" is up to the kind.
#pragma once

#include <span>

#include "platform/sync/Mutex.h"
#include "platform/sync/NamedObjects.h"

class Waiter;

class WaitableObject : public NamedObject {
public:
    static constexpr uint32_t kKind = kWaitable;
    static constexpr size_t kMostAtOnce = 64;  // objects in one wait

    explicit WaitableObject(uint32_t kinds) : NamedObject(kinds | kKind) {}

    // Waits until one of 1 … kMostAtOnce objects can be taken, and takes that one: its index, or
    // WAIT_TIMEOUT. Of several at a time the first is taken. WAIT_ABANDONED_0 plus its index tells of one
    // whose owner ended with it. 0 milliseconds try once, INFINITE never ends.
    static DWORD WaitForAny(std::span<WaitableObject* const> objects, DWORD milliseconds);

protected:
    // Takes the object for the calling thread if it can be taken.
    virtual bool TryTake() VL_REQUIRES(m_lock) = 0;
    // Whether what has just been taken was left by an owner that is no more.
    virtual bool TakeAbandonment() VL_REQUIRES(m_lock) { return false; }

    // Says that it may be possible to take the object now. Under the lock, since who takes it next may
    // close the handle.
    void WakeWaiters() VL_REQUIRES(m_lock);

    Mutex m_lock;  // guards the state of the kind; held for moments only

private:
    friend class WaiterPlaces;
    // A waiter's place in the queue of one object; lives on the waiter's stack.
    struct Place {
        Waiter* waiter = nullptr;
        Place* next = nullptr;
    };

    // WAIT_OBJECT_0 or WAIT_ABANDONED_0 with the object taken, else WAIT_TIMEOUT.
    DWORD TakeNow();
    void Enlist(Place& place);
    void Withdraw(Place& place);

    Place* m_places VL_GUARDED_BY(m_lock) = nullptr;
};
