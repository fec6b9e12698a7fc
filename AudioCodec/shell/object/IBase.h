// The root of all interfaces of the module: reference counting and interface lookup. Any thread may call
// these three. The order of the operations is the binary border: nothing moves, nothing is added.
#pragma once

#include "AudioCodec/shell/object/ResultCodes.h"
#include "platform/base/Guid.h"
#include "platform/base/PlatformResults.h"

namespace vlacwav3 {

struct IBase {
    // RESULT_OK with one more reference for the caller. Otherwise *object is null: PLATFORM_NO_INTERFACE for
    // an interface that the object doesn't have, PLATFORM_NULL_POINTER for a null receiver or identifier.
    virtual Result QueryInterface(const GUID* iid /*in*/, void** object /*out: one reference*/) = 0;
    virtual uint32_t AddRef() = 0;   // returns the new count
    virtual uint32_t Release() = 0;  // returns the new count; at 0 the object is gone

protected:
    ~IBase() = default;  // objects end by Release, never through the interface
};

inline constexpr GUID IID_IBase = MakeGuid("88486D15-9A25-4C88-9A7D-2DB75CA5FCC4");

}  // namespace vlacwav3
