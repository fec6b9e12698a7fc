// A mutex that one thread owns, as many times as it took it. One whose owner ends without giving it back
// stays taken.
#pragma once

#include <thread>

#include "platform/sync/WaitableObject.h"

class MutexObject final : public WaitableObject {
public:
    static constexpr uint32_t kKind = kMutex;
    explicit MutexObject(bool initialOwner);

    // Gives back one taking; false if the calling thread isn't the owner.
    bool Release();

private:
    bool TryTake() override;

    std::thread::id m_owner;  // under m_lock; has a meaning while m_takings isn't 0
    size_t m_takings = 0;     // under m_lock
};
