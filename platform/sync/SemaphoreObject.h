// A count that each wait takes 1 from, and that can be taken while it is above 0.
#pragma once

#include "platform/sync/WaitableObject.h"

class SemaphoreObject final : public WaitableObject {
public:
    static constexpr uint32_t kKind = kSemaphore;
    SemaphoreObject(LONG count, LONG most) : WaitableObject(kKind), m_count(count), m_most(most) {}

    // Adds to the count and tells what it was; false, and nothing added, if it would pass its maximum.
    bool Release(LONG added, LONG* before);

private:
    bool TryTake() override VL_REQUIRES(m_lock);

    LONG m_count VL_GUARDED_BY(m_lock);
    const LONG m_most;
};
