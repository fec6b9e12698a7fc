#include "platform/base/posix/PosixMemory.h"

#include <cstdlib>

void* AllocateAligned(size_t alignment, size_t size) {
    void* block = nullptr;
    return posix_memalign(&block, alignment, size) == 0 ? block : nullptr;
}
