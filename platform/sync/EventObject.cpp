#include "platform/sync/EventObject.h"

void EventObject::Set() {
    const std::lock_guard lock(m_lock);
    m_set = true;
    WakeWaiters();
}

void EventObject::Reset() {
    const std::lock_guard lock(m_lock);
    m_set = false;
}

bool EventObject::TryTake() {
    const bool taken = m_set;
    if (!m_manualReset) m_set = false;
    return taken;
}
