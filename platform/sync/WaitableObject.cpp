// A wait: (1) try each object, (2) take a place in the queue of each, (3) try again, (4) sleep until one of
// them wakes this thread, back to (3), (5) leave the queues. No wake is lost: what comes before (2) is seen
// by (3), what comes after it stays in m_woken until (4). Whoever changes an object wakes all in its queue,
// and the first that takes it has it; the others go to sleep again.
#include "platform/sync/WaitableObject.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <utility>

#include "platform/base/posix/CancellationOff.h"
#include "platform/sync/Waitable.h"

// One thread in a wait. Woken by any of its objects, it looks at all of them again.
class Waiter {
public:
    using Clock = std::chrono::steady_clock;

    void Wake() {
        const std::lock_guard lock(m_lock);
        // Notified under the lock: the waiter lives on the stack of a thread that may leave as soon as
        // it is free.
        m_woken = true;
        m_changed.notify_one();
    }
    void WaitForWake() {
        std::unique_lock lock(m_lock);
        m_changed.wait(lock, [this] { return m_woken; });
        m_woken = false;
    }
    // False if nobody woke it in time.
    bool WaitForWake(Clock::time_point end) {
        std::unique_lock lock(m_lock);
        return m_changed.wait_until(lock, end, [this] { return std::exchange(m_woken, false); });
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_woken = false;  // under m_lock
};

// The places of one waiter in the queues of its objects, until the wait ends.
class WaiterPlaces {
public:
    WaiterPlaces(std::span<WaitableObject* const> objects, Waiter& waiter) : m_objects(objects) {
        for (size_t i = 0; i < objects.size(); ++i) {
            m_places[i].waiter = &waiter;
            objects[i]->Enlist(m_places[i]);
        }
    }
    // (5) On every way out: a place left behind would be on a stack that is gone.
    ~WaiterPlaces() {
        for (size_t i = 0; i < m_objects.size(); ++i) m_objects[i]->Withdraw(m_places[i]);
    }
    WaiterPlaces(const WaiterPlaces&) = delete;
    WaiterPlaces& operator=(const WaiterPlaces&) = delete;

private:
    std::span<WaitableObject* const> m_objects;
    std::array<WaitableObject::Place, WaitableObject::kMostAtOnce> m_places;
};

DWORD WaitableObject::WaitForAny(std::span<WaitableObject* const> objects, DWORD milliseconds) {
    const auto take = [objects] {
        for (size_t i = 0; i < objects.size(); ++i) {
            if (const DWORD taken = objects[i]->TakeNow(); taken != WAIT_TIMEOUT)
                return taken + static_cast<DWORD>(i);
        }
        return WAIT_TIMEOUT;
    };
    // (1) Most waits end here, without a place in any queue.
    if (const DWORD taken = take(); taken != WAIT_TIMEOUT || milliseconds == 0) return taken;

    const CancellationOff off;  // the library's own wait lets nothing through
    // One end for all the sleeps together. The clock is steady: a change of the time of day neither cuts nor
    // draws out a wait.
    const auto end = Waiter::Clock::now() + std::chrono::milliseconds(milliseconds);
    Waiter waiter;
    const WaiterPlaces places(objects, waiter);  // (2)
    for (bool inTime = true;;) {
        // (3) What was set between the look above and the places in the queues is seen here. And once more
        // after the time is up: an object that was set in the last moment is taken.
        if (const DWORD taken = take(); taken != WAIT_TIMEOUT || !inTime) return taken;
        if (milliseconds == INFINITE) {  // (4)
            waiter.WaitForWake();
        } else {
            inTime = waiter.WaitForWake(end);
        }
    }
}

void WaitableObject::WakeWaiters() {
    for (const Place* place = m_places; place; place = place->next) place->waiter->Wake();
}

DWORD WaitableObject::TakeNow() {
    const MutexLock lock(m_lock);
    if (!TryTake()) return WAIT_TIMEOUT;
    return TakeAbandonment() ? WAIT_ABANDONED_0 : WAIT_OBJECT_0;
}

void WaitableObject::Enlist(Place& place) {
    const MutexLock lock(m_lock);
    place.next = std::exchange(m_places, &place);
}

void WaitableObject::Withdraw(Place& place) {
    const MutexLock lock(m_lock);
    Place** link = &m_places;
    while (*link != &place) link = &(*link)->next;
    *link = place.next;
}
