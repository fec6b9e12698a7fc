#include "AudioCodec/graph/filter/CAsyncReadRequest.h"

namespace {
class SourceGuard {
public:
    explicit SourceGuard(CAsyncStream& source) : m_source(source) { m_source.Lock(); }
    ~SourceGuard() { m_source.Unlock(); }
    SourceGuard(const SourceGuard&) = delete;
    SourceGuard& operator=(const SourceGuard&) = delete;

private:
    CAsyncStream& m_source;
};
}  // namespace

CAsyncReadRequest::CAsyncReadRequest(CAsyncStream* source, const Wish& wish)
    : m_source(source),
      m_start(wish.start),
      m_aligned(wish.aligned),
      m_length(wish.length),
      m_buffer(wish.buffer),
      m_context(wish.context),
      m_user(wish.user) {}

HRESULT CAsyncReadRequest::Execute() {
    m_result = ReadSource();
    return m_result;
}

HRESULT CAsyncReadRequest::Outcome() const {
    if (m_result != S_FALSE) return m_result;
    return m_start + m_length == m_source->Size(nullptr) ? S_OK : E_FAIL;
}

HRESULT CAsyncReadRequest::ReadSource() {
    const SourceGuard guard(*m_source);
    DWORD done = 0;
    HRESULT result = m_start == 0 ? m_source->SetPointer(0) : S_OK;
    if (result == S_OK) result = m_source->Read(m_buffer, static_cast<DWORD>(m_length), m_aligned, &done);
    return FAILED(result) ? result : Settle(result, done);
}

// What `done` bytes of the source mean to the request.
HRESULT CAsyncReadRequest::Settle(HRESULT result, DWORD done) {
    const auto delivered = static_cast<LONG>(done);
    const bool isShort = delivered != m_length;
    m_length = delivered;
    if (result == OLE_S_FIRST && m_context) {  // how a source tells of a gap in front of these bytes
        static_cast<IMediaSample*>(m_context)->SetDiscontinuity(TRUE);
        return S_OK;
    }
    return isShort ? S_FALSE : S_OK;
}
