#include "platform/sync/SemaphoreObject.h"

bool SemaphoreObject::Release(LONG added, LONG* before) {
    const MutexLock lock(m_lock);
    if (added > m_most - m_count) return false;
    if (before) *before = m_count;
    m_count += added;
    WakeWaiters();
    return true;
}

bool SemaphoreObject::TryTake() {
    if (m_count == 0) return false;
    --m_count;
    return true;
}
