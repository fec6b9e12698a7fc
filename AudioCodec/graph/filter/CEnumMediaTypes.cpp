#include "AudioCodec/graph/filter/CEnumMediaTypes.h"

#include <limits>
#include <new>

#include "platform/com/TaskMemory.h"

CEnumMediaTypes::CEnumMediaTypes(CBasePin* pin)
    : m_pin(RefPtr<CBasePin>::Retain(pin)), m_version(pin->GetMediaTypeVersion()) {}

HRESULT CEnumMediaTypes::QueryInterface(const GUID& iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    return iid == IID_IEnumMediaTypes || iid == IID_IUnknown ? GetInterface(this, object) : E_NOINTERFACE;
}

HRESULT CEnumMediaTypes::Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) {
    if (!types) return E_POINTER;
    if (!fetched && count > 1) return E_INVALIDARG;
    if (fetched) *fetched = 0;
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    ULONG done = 0;
    while (done < count) {
        AM_MEDIA_TYPE* block = NewTypeBlockAt(m_position);
        if (!block) break;
        types[done] = block;
        ++done;
        ++m_position;
    }
    if (fetched) *fetched = done;
    return done == count ? S_OK : S_FALSE;
}

HRESULT CEnumMediaTypes::Skip(ULONG count) {
    if (count == 0) return S_OK;
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    const int64_t target = int64_t{m_position} + count;
    if (target > std::numeric_limits<int>::max()) return S_FALSE;
    m_position = static_cast<int>(target);
    MediaType last;
    return m_pin->GetMediaType(m_position - 1, &last) == S_OK ? S_OK : S_FALSE;
}

HRESULT CEnumMediaTypes::Reset() {
    m_version = m_pin->GetMediaTypeVersion();
    m_position = 0;
    return S_OK;
}

HRESULT CEnumMediaTypes::Clone(IEnumMediaTypes** copy) {
    if (!copy) return E_POINTER;
    *copy = nullptr;
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    auto* clone = new (std::nothrow) CEnumMediaTypes(m_pin.Get());
    if (!clone) return E_OUTOFMEMORY;
    clone->m_position = m_position;
    clone->m_version = m_version;
    *copy = clone;
    return S_OK;
}

// Null if there is no such type, or no memory for it.
AM_MEDIA_TYPE* CEnumMediaTypes::NewTypeBlockAt(int position) {
    MediaType type;
    if (m_pin->GetMediaType(position, &type) != S_OK) return nullptr;
    void* block = CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE));
    return block ? new (block) AM_MEDIA_TYPE(type.Detach()) : nullptr;
}
