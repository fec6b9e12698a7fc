#include "platform/sync/MutexObject.h"

MutexObject::MutexObject(bool initialOwner)
    : WaitableObject(kKind), m_owner(std::this_thread::get_id()), m_takings(initialOwner ? 1 : 0) {}

bool MutexObject::TryTake() {
    const auto self = std::this_thread::get_id();
    if (m_takings != 0 && m_owner != self) return false;
    m_owner = self;
    ++m_takings;
    return true;
}

bool MutexObject::Release() {
    const std::lock_guard lock(m_lock);
    if (m_takings == 0 || m_owner != std::this_thread::get_id()) return false;
    if (--m_takings == 0) WakeWaiters();
    return true;
}
