// How a filter of the layer tells the one after it that the stream broke off: what a source or a decoder
// couldn't give is not the end. Stands beside IPin on the pin that receives.
#pragma once

#include "platform/base/Types.h"
#include "platform/com/Unknown.h"

struct IFailureSink : IUnknown {
    // In place of EndOfStream: nothing more comes, for this reason, until a flush.
    virtual HRESULT StreamFailed(HRESULT reason /*in: a failure*/) = 0;

protected:
    ~IFailureSink() = default;
};

inline constexpr GUID IID_IFailureSink = MakeGuid("7C0E5A56-4D0B-4E0C-9B58-2F6A31D7C9E4");
