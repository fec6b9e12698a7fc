// Memory with an alignment, of any size: the standard's own call takes multiples of the alignment alone.
#pragma once

#include <cstddef>

// For std::free; null where there is no memory. The alignment is a power of two.
void* AllocateAligned(size_t alignment /*bytes*/, size_t size /*bytes*/);
