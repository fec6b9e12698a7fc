#include "AudioCodec/shell/ModuleTableLock.h"

#include "platform/sync/Waitable.h"

ModuleTableLock::ModuleTableLock(const char* name) : m_mutex(CreateMutexA(nullptr, FALSE, name)) {}

ModuleTableLock::Scope::Scope(const ModuleTableLock& lock)
    : m_mutex(lock.m_mutex.get()), m_taken(WaitForSingleObject(m_mutex, INFINITE) == WAIT_OBJECT_0) {}

ModuleTableLock::Scope::~Scope() {
    if (m_taken) ReleaseMutex(m_mutex);
}
