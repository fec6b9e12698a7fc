#include "AudioCodec/graph/filter/CMediaSample.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "AudioCodec/graph/filter/CBaseAllocator.h"
#include "platform/media/MediaType.h"

namespace {
// How many bytes of the properties it takes to know a field.
enum Covers : size_t {
    kTypeSpecificFlags = offsetof(AM_SAMPLE2_PROPERTIES, dwSampleFlags),
    kSampleFlags = offsetof(AM_SAMPLE2_PROPERTIES, lActual),
    kActual = kSampleFlags + sizeof(LONG),
    kStart = offsetof(AM_SAMPLE2_PROPERTIES, tStop),
    kStop = offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId),
    kStreamId = kStop + sizeof(DWORD),
    kMediaType = offsetof(AM_SAMPLE2_PROPERTIES, pbBuffer),
    kBuffer = offsetof(AM_SAMPLE2_PROPERTIES, cbBuffer),
    kBufferSize = kBuffer + sizeof(LONG),
};

constexpr DWORD kSettableFlags = 0x1DF;
}  // namespace

CMediaSample::CMediaSample(CBaseAllocator* allocator, BYTE* buffer, LONG size)
    : m_buffer(buffer), m_actual(size), m_size(size), m_allocator(allocator) {}

CMediaSample::~CMediaSample() { FreeMediaTypeBlock(m_type); }

HRESULT CMediaSample::QueryInterface(const GUID& iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (iid == IID_IMediaSample2 || iid == IID_IMediaSample || iid == IID_IUnknown) {
        return GetInterface(this, object);
    }
    return E_NOINTERFACE;
}

uint32_t CMediaSample::Release() {
    return m_references.Drop([this] {
        SetMediaType(nullptr);
        m_said.flags = 0;
        m_typeSpecificFlags = 0;
        m_streamId = 0;
        m_allocator->ReleaseBuffer(this);  // the sample may be gone after it
    });
}

HRESULT CMediaSample::GetPointer(BYTE** buffer) {
    if (!buffer) return E_POINTER;
    *buffer = m_buffer;
    return S_OK;
}

HRESULT CMediaSample::SetActualDataLength(LONG length) {
    if (length > m_size) return VFW_E_BUFFER_OVERFLOW;
    m_actual = length;
    return S_OK;
}

HRESULT CMediaSample::GetMediaType(AM_MEDIA_TYPE** type) {
    if (!type) return E_POINTER;
    *type = nullptr;
    if (!m_type) return S_FALSE;
    *type = NewMediaTypeBlock(*m_type);
    return *type ? S_OK : E_OUTOFMEMORY;
}

HRESULT CMediaSample::SetMediaType(AM_MEDIA_TYPE* type) {
    AM_MEDIA_TYPE* copy = type ? NewMediaTypeBlock(*type) : nullptr;
    if (type && !copy) return E_OUTOFMEMORY;
    FreeMediaTypeBlock(std::exchange(m_type, copy));
    return m_said.Mark(AM_SAMPLE_TYPECHANGED, copy != nullptr);
}

HRESULT CMediaSample::GetMediaTime(LONGLONG* start, LONGLONG* end) {
    if (!start || !end) return E_POINTER;
    if ((m_said.flags & kMediaTimeValid) == 0) return VFW_E_MEDIA_TIME_NOT_SET;
    *start = m_mediaStart;
    *end = m_mediaStart + m_mediaLength;
    return S_OK;
}

HRESULT CMediaSample::SetMediaTime(LONGLONG* start, LONGLONG* end) {
    if (start && !end) return E_POINTER;
    if (start) {
        m_mediaStart = *start;
        m_mediaLength = static_cast<LONG>(*end - *start);  // 32 bits are kept
    }
    return m_said.Mark(kMediaTimeValid, start != nullptr);
}

HRESULT CMediaSample::GetProperties(DWORD size, BYTE* properties) {
    if (size == 0) return S_OK;
    if (!properties) return E_POINTER;
    size = std::min(size, DWORD{sizeof(AM_SAMPLE2_PROPERTIES)});
    const AM_SAMPLE2_PROPERTIES all = {.cbData = size,
                                       .dwTypeSpecificFlags = m_typeSpecificFlags,
                                       .dwSampleFlags = m_said.flags & ~kMediaTimeValid,
                                       .lActual = m_actual,
                                       .tStart = m_said.start,
                                       .tStop = m_said.stop,
                                       .dwStreamId = m_streamId,
                                       .pMediaType = m_type,
                                       .pbBuffer = m_buffer,
                                       .cbBuffer = m_size};
    std::memcpy(properties, &all, size);
    return S_OK;
}

HRESULT CMediaSample::SetProperties(DWORD size, const BYTE* properties) {
    AM_SAMPLE2_PROPERTIES all = {};
    if (size < sizeof(all.cbData)) return S_OK;
    if (!properties) return E_POINTER;
    std::memcpy(&all.cbData, properties, sizeof(all.cbData));
    if (size > sizeof(all) || all.cbData > sizeof(all)) return E_INVALIDARG;
    size = std::min(size, all.cbData);
    std::memcpy(&all, properties, size);
    if (const HRESULT result = CheckProperties(size, all); FAILED(result)) return result;

    if (size >= kMediaType) {
        if (const HRESULT result = SetMediaType(all.pMediaType); FAILED(result)) return result;
    }
    if (size >= kTypeSpecificFlags) m_typeSpecificFlags = all.dwTypeSpecificFlags;
    if (size >= kSampleFlags) {
        constexpr DWORD kOwn = kMediaTimeValid | AM_SAMPLE_TYPECHANGED;  // of these the flags can't decide
        m_said.flags = (m_said.flags & kOwn) | (all.dwSampleFlags & ~kOwn);
    }
    if (size >= kActual) m_actual = all.lActual;
    if (size >= kStart) m_said.start = all.tStart;
    if (size >= kStop) m_said.stop = all.tStop;
    if (size >= kStreamId) m_streamId = all.dwStreamId;
    return S_OK;
}

HRESULT CMediaSample::CheckProperties(DWORD size, const AM_SAMPLE2_PROPERTIES& properties) const {
    if (size >= kSampleFlags) {
        const DWORD added = properties.dwSampleFlags & ~m_said.flags;
        if ((properties.dwSampleFlags & ~kSettableFlags) != 0) return E_INVALIDARG;
        if ((added & AM_SAMPLE_TIMEVALID) != 0 && size < kStop) return E_INVALIDARG;
    }
    if (size >= kActual && properties.lActual > m_size) return E_INVALIDARG;
    if (size >= kBuffer && properties.pbBuffer != m_buffer) return E_INVALIDARG;
    if (size >= kBufferSize && properties.cbBuffer != m_size) return E_INVALIDARG;
    return S_OK;
}
