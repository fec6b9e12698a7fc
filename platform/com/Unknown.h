// The root of the platform's own interfaces (streams, media filters); the module's own objects have
// another one, IBase.
#pragma once

#include "platform/base/Guid.h"
#include "platform/base/PlatformResults.h"

namespace vlacwav3 {

struct IUnknown {
    // PLATFORM_OK with one more reference for the caller, PLATFORM_NO_INTERFACE with *object null where the
    // object has no such interface, PLATFORM_NULL_POINTER for a null receiver.
    virtual int32_t QueryInterface(const GUID& iid /*in*/, void** object /*out: one reference*/) = 0;
    virtual uint32_t AddRef() = 0;   // returns the new count
    virtual uint32_t Release() = 0;  // returns the new count; at 0 the object is gone

protected:
    ~IUnknown() = default;  // objects end by Release, never through the interface
};

inline constexpr GUID IID_IUnknown = MakeGuid("00000000-0000-0000-C000-000000000046");

}  // namespace vlacwav3
