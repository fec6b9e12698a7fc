#include "AudioCodec/shell/ModuleTableLock.h"

#include "platform/sync/Waitable.h"

namespace {
bool Take(HANDLE mutex) {
    const DWORD taken = WaitForSingleObject(mutex, INFINITE);
    return taken == WAIT_OBJECT_0 || taken == WAIT_ABANDONED_0;
}
}  // namespace

ModuleTableLock::ModuleTableLock(const char* name) : m_mutex(CreateMutexA(nullptr, FALSE, name)) {}

ModuleTableLock::Scope::Scope(const ModuleTableLock& lock)
    : m_mutex(lock.m_mutex.get()), m_taken(Take(m_mutex)) {}

ModuleTableLock::Scope::~Scope() {
    if (m_taken) ReleaseMutex(m_mutex);
}
