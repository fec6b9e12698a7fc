// The allocator of the interface contract: buffers that a getter hands out go back through Free of any
// object. Any thread may call both operations. The order of the operations is the binary border: nothing
// moves, nothing is added.
#pragma once

#include "AudioCodec/shell/object/IBase.h"

namespace vlacwav3 {

struct IMemory : IBase {
    // Returns a block that the caller owns, its content open; null without memory.
    virtual void* Alloc(uint32_t size /*in: bytes*/) = 0;
    virtual void Free(void* block /*in: from Alloc or a getter, may be null*/) = 0;

protected:
    ~IMemory() = default;
};

}  // namespace vlacwav3
