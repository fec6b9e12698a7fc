// The source filter over a caller's stream, which a graph reads as if it were a file. Built into the module
// and never registered. Threads: as CAsyncReader.
#pragma once

#include "AudioCodec/graph/filter/CAsyncReader.h"
#include "AudioCodec/graph/filter/CMemStream.h"

class CMemReader final : public CAsyncReader {
public:
    // Without a reference. The stream isn't owned; it may go before the filter once the graph has
    // stopped. The type is copied; why it can't be goes into `result`, which stays untouched
    // otherwise. Throws std::bad_alloc.
    CMemReader(CMemStream* stream, const AM_MEDIA_TYPE& type, HRESULT* result)
        : CAsyncReader(nullptr, nullptr, stream, type, result) {}

    HRESULT Register() override { return S_OK; }
    HRESULT Unregister() override { return S_OK; }
};
