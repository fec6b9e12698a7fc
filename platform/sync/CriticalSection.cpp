#include "platform/sync/CriticalSection.h"

#include <mutex>

namespace {
std::recursive_mutex* MutexOf(const CRITICAL_SECTION* section) {
    return static_cast<std::recursive_mutex*>(section->impl);
}
}  // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) { section->impl = new std::recursive_mutex; }

void EnterCriticalSection(CRITICAL_SECTION* section) { MutexOf(section)->lock(); }

void LeaveCriticalSection(CRITICAL_SECTION* section) { MutexOf(section)->unlock(); }

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    delete MutexOf(section);
    section->impl = nullptr;
}
