// A mutex that one thread owns, as many times as it took it. When the owner ends without giving it back, it
// is free and abandoned.
#pragma once

#include <thread>
#include <utility>

#include "platform/sync/WaitableObject.h"

class MutexObject final : public WaitableObject {
public:
    static constexpr uint32_t kKind = kMutex;
    explicit MutexObject(bool initialOwner);
    ~MutexObject() override;

    // Gives back one taking; false if the calling thread isn't the owner. By the copy of the layer that made
    // the mutex, which counts what its threads own.
    virtual bool Release();

private:
    friend class OwnedMutexes;
    bool TryTake() override VL_REQUIRES(m_lock);
    bool TakeAbandonment() override VL_REQUIRES(m_lock) { return std::exchange(m_abandoned, false); }
    // The thread ends: what it still owns is free.
    void AbandonBy(std::thread::id owner);

    std::thread::id m_owner VL_GUARDED_BY(m_lock);  // has a meaning while m_takings isn't 0
    size_t m_takings VL_GUARDED_BY(m_lock) = 0;
    bool m_abandoned VL_GUARDED_BY(m_lock) = false;
    MutexObject* m_previous = nullptr;  // in the list of OwnedMutexes, under its lock
    MutexObject* m_next = nullptr;      // likewise
};
