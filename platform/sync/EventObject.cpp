#include "platform/sync/EventObject.h"

void EventObject::Set() {
    const MutexLock lock(m_lock);
    m_set = true;
    WakeWaiters();
}

void EventObject::Reset() {
    const MutexLock lock(m_lock);
    m_set = false;
}

bool EventObject::TryTake() {
    const bool taken = m_set;
    if (!m_manualReset) m_set = false;
    return taken;
}
