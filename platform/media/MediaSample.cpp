#include "platform/media/MediaSample.h"

#include <algorithm>
#include <utility>

BYTE* MediaSample::Resize(size_t size) {
    if (m_own.size() < size + kPadding) m_own.resize(size + kPadding);
    std::fill_n(m_own.begin() + static_cast<std::ptrdiff_t>(size), kPadding, BYTE{0});
    m_owner.reset();
    Use(m_own.data(), size);
    return m_memory;
}

void MediaSample::Show(std::shared_ptr<const void> owner, BYTE* memory, size_t size) {
    m_owner = std::move(owner);
    Use(memory, size);
}

void MediaSample::Use(BYTE* memory, size_t size) {
    m_memory = memory;
    m_size = m_length = static_cast<LONG>(size);
    m_said = {};
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
