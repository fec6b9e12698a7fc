#include "platform/sync/OwnedMutexes.h"

#include "platform/sync/ForkPass.h"

OwnedMutexes& OwnedMutexes::Instance() {
    const ForkPass pass;
    static OwnedMutexes mutexes;
    return mutexes;
}

void OwnedMutexes::Add(MutexObject& mutex) {
    const ProcessLock lock(m_lock);
    mutex.m_next = m_first;
    if (m_first) m_first->m_previous = &mutex;
    m_first = &mutex;
}

void OwnedMutexes::Remove(MutexObject& mutex) {
    const ProcessLock lock(m_lock);
    if (mutex.m_next) mutex.m_next->m_previous = mutex.m_previous;
    (mutex.m_previous ? mutex.m_previous->m_next : m_first) = mutex.m_next;
}

void OwnedMutexes::AtThreadEnd(void* /*count*/) {
    OwnedMutexes& all = Instance();
    const ProcessLock lock(all.m_lock);
    for (MutexObject* mutex = all.m_first; mutex; mutex = mutex->m_next)
        mutex->AbandonBy(std::this_thread::get_id());
}
