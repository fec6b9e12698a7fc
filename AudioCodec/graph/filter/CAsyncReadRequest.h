// One read from a source: what is asked for, and how it came out. Belongs to the queue that it waits in; one
// thread at a time.
#pragma once

#include "AudioCodec/graph/filter/CAsyncStream.h"
#include "platform/media/TransportInterfaces.h"

class CAsyncReadRequest {
public:
    // What a caller asks for. `context`, where it isn't null, is the IMediaSample that the buffer belongs to.
    struct Wish {
        int64_t start = 0;  // bytes from the start of the source
        LONG length = 0;    // bytes
        BOOL aligned = FALSE;
        BYTE* buffer = nullptr;  // not owned
        void* context = nullptr;
        DWORD_PTR user = 0;  // comes back with the sample
    };

    // The source outlives the request.
    CAsyncReadRequest(CAsyncStream* source, const Wish& wish);

    // Reads, and returns the outcome: S_OK, S_FALSE where fewer bytes came, or the source's failure.
    // Positions aren't applied, but for 0, which rewinds the source: the bytes are the next ones.
    HRESULT Execute();
    // The outcome for one who waited for it: fewer bytes are no failure at the end of the source, and E_FAIL
    // before it. A request that never ran returns VFW_E_TIMEOUT.
    HRESULT Outcome() const;

    LONG Length() const { return m_length; }
    void* Context() const { return m_context; }
    DWORD_PTR User() const { return m_user; }

private:
    HRESULT ReadSource();
    HRESULT Settle(HRESULT result, DWORD done);

    CAsyncStream* const m_source;
    const int64_t m_start;
    const BOOL m_aligned;
    LONG m_length;  // asked for; then delivered
    BYTE* const m_buffer;
    void* const m_context;
    const DWORD_PTR m_user;
    HRESULT m_result = VFW_E_TIMEOUT;
};
