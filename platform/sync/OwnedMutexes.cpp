#include "platform/sync/OwnedMutexes.h"

#include <bit>
#include <climits>
#include <cstdint>

OwnedMutexes& OwnedMutexes::Instance() {
    static OwnedMutexes mutexes;
    return mutexes;
}

OwnedMutexes::OwnedMutexes() {
    // Without a key there are no counts, and a mutex stays with a thread that ended.
    if (pthread_key_create(&m_key, &AtThreadEnd) != 0) m_key = PTHREAD_KEYS_MAX;
}

OwnedMutexes::~OwnedMutexes() { pthread_key_delete(m_key); }

void OwnedMutexes::Add(MutexObject& mutex) {
    const std::lock_guard lock(m_lock);
    mutex.m_next = m_first;
    if (m_first) m_first->m_previous = &mutex;
    m_first = &mutex;
}

void OwnedMutexes::Remove(MutexObject& mutex) {
    const std::lock_guard lock(m_lock);
    if (mutex.m_next) mutex.m_next->m_previous = mutex.m_previous;
    (mutex.m_previous ? mutex.m_previous->m_next : m_first) = mutex.m_next;
}

void OwnedMutexes::Count(int change) const {
    const auto count = std::bit_cast<intptr_t>(pthread_getspecific(m_key));
    pthread_setspecific(m_key, std::bit_cast<void*>(count + change));
}

void OwnedMutexes::AtThreadEnd(void* /*count*/) {
    OwnedMutexes& all = Instance();
    const std::lock_guard lock(all.m_lock);
    for (MutexObject* mutex = all.m_first; mutex; mutex = mutex->m_next)
        mutex->AbandonBy(std::this_thread::get_id());
}
