#include "AudioCodec/graph/filter/CMemStream.h"

CMemStream::CMemStream(IStream* stream) : m_stream(stream) {
    Seek(0, STREAM_SEEK_END, m_length);
    Seek(0, STREAM_SEEK_SET, m_position);
}

HRESULT CMemStream::SetPointer(int64_t position) {
    const CritSecGuard guard(m_lock);
    return Seek(position, STREAM_SEEK_SET, m_position);
}

HRESULT CMemStream::Read(BYTE* buffer, DWORD size, BOOL /*aligned*/, DWORD* done) {
    const CritSecGuard guard(m_lock);
    uint32_t count = 0;
    const HRESULT result = m_stream->Read(buffer, size, &count);
    if (FAILED(result)) return result;
    m_position += count;
    if (done) *done = count;
    return result;
}

int64_t CMemStream::Size(int64_t* available) {
    if (available) *available = m_length;
    return m_length;
}

int64_t CMemStream::Position() {
    const CritSecGuard guard(m_lock);
    return m_position;
}

HRESULT CMemStream::Seek(int64_t move, DWORD origin, int64_t& reached) {
    LARGE_INTEGER distance = {};
    distance.QuadPart = move;
    ULARGE_INTEGER place = {};
    place.QuadPart = static_cast<uint64_t>(reached);
    const HRESULT result = m_stream->Seek(distance, origin, &place);
    reached = static_cast<int64_t>(place.QuadPart);
    return result;
}
