// The allocator of the interface contract: buffers that a getter hands out go back through Free of any
// object.
#pragma once

#include "AudioCodec/shell/object/IBase.h"

struct IMemory : IBase {
    virtual void* Alloc(uint32_t size /*in: bytes*/) = 0;  // null without memory
    virtual void Free(void* block /*in: from Alloc, may be null*/) = 0;

protected:
    ~IMemory() = default;
};
