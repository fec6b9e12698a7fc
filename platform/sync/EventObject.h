// An event: set until somebody resets it, or, with automatic reset, until one wait has taken it.
#pragma once

#include "platform/sync/WaitableObject.h"

class EventObject final : public WaitableObject {
public:
    static constexpr uint32_t kKind = kEvent;
    EventObject(bool manualReset, bool set) : WaitableObject(kKind), m_manualReset(manualReset), m_set(set) {}

    void Set();
    void Reset();

private:
    bool TryTake() override VL_REQUIRES(m_lock);

    const bool m_manualReset;
    bool m_set VL_GUARDED_BY(m_lock);
};
