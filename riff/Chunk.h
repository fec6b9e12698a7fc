// A chunk as its header tells of it, and where it lies.
#pragma once

#include "riff/WaveTypes.h"

struct Chunk {
    uint64_t offset = 0;    // of its header, from where the walk counts
    uint32_t id = 0;        // its four bytes, the first in the lowest bits
    uint32_t declared = 0;  // the size that the header tells, without the pad byte
    uint64_t size = 0;      // the size that it has: the declared one, unless the walk's caller knows better

    uint64_t Content() const { return offset + kChunkHeaderSize; }
    uint64_t End() const { return Content() + size + (size & 1); }
};
