#include "platform/base/VirtualMemory.h"

#include <cstdlib>
#include <cstring>

#include "platform/base/LastError.h"

namespace {
// Not the system's own: what code finds out about alignments must not change with the machine.
constexpr DWORD kPageSize = 4096;
constexpr DWORD kGranularity = 65536;
}  // namespace

void GetSystemInfo(SYSTEM_INFO* info) { *info = {kPageSize, kGranularity}; }

void* VirtualAlloc(void* address, size_t size, DWORD type, DWORD protection) {
    void* block = nullptr;
    if (address || size == 0 || type != MEM_COMMIT || protection != PAGE_READWRITE) {
        SetLastError(ERROR_INVALID_PARAMETER);
    } else if (posix_memalign(&block, kGranularity, size) != 0) {
        block = nullptr;
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    } else {
        std::memset(block, 0, size);
    }
    return block;
}

BOOL VirtualFree(void* address, size_t size, DWORD type) {
    if (!address || size != 0 || type != MEM_RELEASE) return FailWith(ERROR_INVALID_PARAMETER);
    std::free(address);
    return TRUE;
}
