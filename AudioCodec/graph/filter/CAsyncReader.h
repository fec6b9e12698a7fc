// A source filter with one output pin that is read from through IAsyncReader. Which source it is, and of what
// type, is the derived class's. Threads: as its bases; the source must be idle when the filter ends.
#pragma once

#include "AudioCodec/graph/filter/CAsyncOutputPin.h"
#include "AudioCodec/graph/filter/CBaseFilter.h"

inline constexpr GUID CLSID_CAsyncReader = MakeGuid("BD734D16-8AFC-4CFC-92C0-D95112DCD82C");

class CAsyncReader : public CBaseFilter {
public:
    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int index) override { return index == 0 ? &m_pin : nullptr; }

    // What the output pin does when it is to be connected.
    virtual HRESULT Connect(IPin* receiver, const AM_MEDIA_TYPE* type);

    const AM_MEDIA_TYPE& SourceType() const { return m_type.Get(); }  // of the bytes; fixed

protected:
    // Name and outer object may be null. The source isn't owned. A failure to copy the type goes into
    // `result`, which stays untouched otherwise. Throws std::bad_alloc.
    CAsyncReader(const WCHAR* name, IUnknown* outer, CAsyncStream* source, const AM_MEDIA_TYPE& type,
                 HRESULT* result);

private:
    CCritSec m_filterLock;
    CAsyncRequestQueue m_queue;
    CAsyncOutputPin m_pin;
    MediaType m_type;
};
