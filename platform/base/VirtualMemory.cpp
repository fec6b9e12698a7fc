#include "platform/base/VirtualMemory.h"

#include <cstdlib>
#include <cstring>

#include "platform/base/LastError.h"
#include "platform/base/posix/PosixMemory.h"

namespace {
// Not the system's own: what code finds out about alignments must not change with the machine.
constexpr DWORD kPageSize = 4096;
constexpr DWORD kGranularity = 65536;
}  // namespace

void GetSystemInfo(SYSTEM_INFO* info) { *info = {kPageSize, kGranularity}; }

void* VirtualAlloc(void* address, size_t size, DWORD type, DWORD protection) {
    if (address || size == 0 || type != MEM_COMMIT || protection != PAGE_READWRITE)
        return SetLastError(ERROR_INVALID_PARAMETER), nullptr;
    void* const block = AllocateAligned(kGranularity, size);
    if (!block) return SetLastError(ERROR_NOT_ENOUGH_MEMORY), nullptr;
    std::memset(block, 0, size);
    return block;
}

BOOL VirtualFree(void* address, size_t size, DWORD type) {
    if (!address || size != 0 || type != MEM_RELEASE) return FailWith(ERROR_INVALID_PARAMETER);
    std::free(address);
    return TRUE;
}
