// A lock of one process that the thread holding it may enter again.
#pragma once

#include "platform/base/Types.h"

struct CRITICAL_SECTION {
    void* impl;  // owned by the layer between Initialize and Delete
};

// Throws std::bad_alloc where there is no memory.
VL_PLATFORM_API void InitializeCriticalSection(CRITICAL_SECTION* section);
VL_PLATFORM_API void EnterCriticalSection(CRITICAL_SECTION* section);
// Once for each Enter, by the thread that entered.
VL_PLATFORM_API void LeaveCriticalSection(CRITICAL_SECTION* section);
// No thread may hold it or wait for it any more.
VL_PLATFORM_API void DeleteCriticalSection(CRITICAL_SECTION* section);
