#include "platform/media/MediaSample.h"

#include <algorithm>

BYTE* MediaSample::Resize(size_t size) {
    if (m_own.size() < size + kPadding) m_own.resize(size + kPadding);
    std::fill_n(m_own.begin() + static_cast<std::ptrdiff_t>(size), kPadding, BYTE{0});
    m_memory = m_own.data();
    m_size = m_length = static_cast<LONG>(size);
    m_said = {};
    return m_memory;
}

HRESULT MediaSample::QueryInterface(const GUID& iid, void** object) {
    return GiveFace({{IID_IMediaSample, this}}, iid, object);
}

HRESULT MediaSample::GetPointer(BYTE** buffer) {
    if (!buffer) return E_POINTER;
    *buffer = m_memory;
    return S_OK;
}

HRESULT MediaSample::SetActualDataLength(LONG length) {
    if (length < 0 || length > m_size) return VFW_E_BUFFER_OVERFLOW;
    m_length = length;
    return S_OK;
}

HRESULT MediaSample::GetMediaType(AM_MEDIA_TYPE** type) {
    if (!type) return E_POINTER;
    *type = nullptr;
    return S_FALSE;
}
