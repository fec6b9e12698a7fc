// Memory in whole blocks from the system, filled with zeros and aligned to the allocation granularity.
#pragma once

#include "platform/base/PageAccess.h"

inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RELEASE = 0x8000;

struct SYSTEM_INFO {
    DWORD dwPageSize;               // bytes
    DWORD dwAllocationGranularity;  // bytes; every block of VirtualAlloc starts at a multiple of it
};
VL_PLATFORM_API void GetSystemInfo(SYSTEM_INFO* info);

// A new block of `size` bytes; null with ERROR_NOT_ENOUGH_MEMORY if there is no memory. Only new blocks (a
// null address) that are committed at once for reading and writing are supported: all else, and a size of
// 0, is ERROR_INVALID_PARAMETER.
VL_PLATFORM_API void* VirtualAlloc(void* address, size_t size, DWORD type, DWORD protection);
// Frees a whole block: the size must be 0 and the type MEM_RELEASE, otherwise
// FALSE with ERROR_INVALID_PARAMETER.
VL_PLATFORM_API BOOL VirtualFree(void* address, size_t size, DWORD type);
