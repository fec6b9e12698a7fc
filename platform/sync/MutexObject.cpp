#include "platform/sync/MutexObject.h"

#include "platform/sync/OwnedMutexes.h"

MutexObject::MutexObject(bool initialOwner)
    : WaitableObject(kKind), m_owner(std::this_thread::get_id()), m_takings(initialOwner ? 1 : 0) {
    OwnedMutexes::Instance().Add(*this);
    if (initialOwner) OwnedMutexes::Instance().Count(1);
}

MutexObject::~MutexObject() {
    OwnedMutexes::Instance().Remove(*this);
    // Closed by another thread, it stays in the owner's count, and the owner's end looks for it in vain.
    if (m_takings != 0 && m_owner == std::this_thread::get_id()) OwnedMutexes::Instance().Count(-1);
}

bool MutexObject::TryTake() {
    const auto self = std::this_thread::get_id();
    if (m_takings != 0 && m_owner != self) return false;
    if (m_takings++ == 0) OwnedMutexes::Instance().Count(1);
    m_owner = self;
    return true;
}

bool MutexObject::Release() {
    const MutexLock lock(m_lock);
    if (m_takings == 0 || m_owner != std::this_thread::get_id()) return false;
    if (--m_takings == 0) {
        OwnedMutexes::Instance().Count(-1);
        WakeWaiters();
    }
    return true;
}

void MutexObject::AbandonBy(std::thread::id owner) {
    const MutexLock lock(m_lock);
    if (m_takings == 0 || m_owner != owner) return;
    m_takings = 0;
    m_abandoned = true;
    WakeWaiters();
}
