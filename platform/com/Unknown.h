// The root of the platform's own interfaces (streams, media filters); the module's objects have another,
// IBase.
#pragma once

#include "platform/base/Guid.h"
#include "platform/base/Types.h"

struct IUnknown {
    virtual HRESULT QueryInterface(const GUID& iid /*in*/, void** object /*out: one reference*/) = 0;
    virtual uint32_t AddRef() = 0;
    virtual uint32_t Release() = 0;

protected:
    ~IUnknown() = default;  // objects end by Release, never through the interface
};

inline constexpr GUID IID_IUnknown = MakeGuid("00000000-0000-0000-C000-000000000046");
