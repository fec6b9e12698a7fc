// The root of all interfaces of the module: reference counting and interface lookup.
// The order of the operations is the binary border: nothing moves, nothing is added.
#pragma once

#include "AudioCodec/shell/object/ResultCodes.h"
#include "platform/base/Guid.h"

struct IBase {
    // Returns a counted reference to the object's interface `iid`, or a failure with *object null.
    virtual Result QueryInterface(const GUID* iid /*in*/, void** object /*out: one reference*/) = 0;
    virtual uint32_t AddRef() = 0;   // the new count
    virtual uint32_t Release() = 0;  // the new count; at 0 the object is gone

protected:
    ~IBase() = default;  // objects end by Release, never through the interface
};

inline constexpr GUID IID_IBase = MakeGuid("88486D15-9A25-4C88-9A7D-2DB75CA5FCC4");
