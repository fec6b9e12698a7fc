#include "platform/sync/posix/ThreadEndCount.h"

#include <bit>
#include <climits>
#include <cstdint>

ThreadEndCount::ThreadEndCount(AtEnd atEnd) {
    // Without a key there are no counts, and nobody is called.
    if (pthread_key_create(&m_key, atEnd) != 0) m_key = PTHREAD_KEYS_MAX;
}

ThreadEndCount::~ThreadEndCount() { pthread_key_delete(m_key); }

void ThreadEndCount::Add(int change) const {
    const auto count = std::bit_cast<intptr_t>(pthread_getspecific(m_key));
    pthread_setspecific(m_key, std::bit_cast<void*>(count + change));
}
