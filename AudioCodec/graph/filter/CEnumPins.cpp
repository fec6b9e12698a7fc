#include "AudioCodec/graph/filter/CEnumPins.h"

#include <new>

#include "AudioCodec/graph/filter/CBasePin.h"

CEnumPins::CEnumPins(CBaseFilter* filter) : m_filter(RefPtr<CBaseFilter>::Retain(filter)) { TakeStock(); }

HRESULT CEnumPins::QueryInterface(const GUID& iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    return iid == IID_IEnumPins || iid == IID_IUnknown ? GetInterface(this, object) : E_NOINTERFACE;
}

HRESULT CEnumPins::Next(ULONG count, IPin** pins, ULONG* fetched) {
    if (!pins) return E_POINTER;
    if (!fetched && count > 1) return E_INVALIDARG;
    if (fetched) *fetched = 0;
    if (IsOutOfSync()) TakeStock();
    ULONG done = 0;
    while (done < count && m_position < m_pinCount) {
        CBasePin* pin = m_filter->GetPin(m_position);
        ++m_position;
        if (pin && m_handedOut.Contains(pin)) continue;
        if (const HRESULT result = HandOut(pin, pins[done]); FAILED(result)) {
            while (done > 0) pins[--done]->Release();
            return result;
        }
        ++done;
    }
    if (fetched) *fetched = done;
    return done == count ? S_OK : S_FALSE;
}

HRESULT CEnumPins::Skip(ULONG count) {
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    if (count > static_cast<ULONG>(m_pinCount - m_position)) return S_FALSE;
    m_position += static_cast<int>(count);
    return S_OK;
}

HRESULT CEnumPins::Reset() {
    TakeStock();
    m_handedOut.Clear();
    return S_OK;
}

HRESULT CEnumPins::Clone(IEnumPins** copy) {
    if (!copy) return E_POINTER;
    *copy = nullptr;
    if (IsOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
    auto clone = RefPtr<CEnumPins>::Adopt(new (std::nothrow) CEnumPins(m_filter.Get()));
    if (!clone || !clone->m_handedOut.AddTail(m_handedOut)) return E_OUTOFMEMORY;
    clone->m_position = m_position;
    clone->m_pinCount = m_pinCount;
    clone->m_version = m_version;
    *copy = clone.Detach();
    return S_OK;
}

void CEnumPins::TakeStock() {
    m_version = m_filter->GetPinVersion();
    m_pinCount = m_filter->GetPinCount();
    m_position = 0;
}

HRESULT CEnumPins::HandOut(CBasePin* pin, IPin*& receiver) {
    if (!pin) return VFW_E_ENUM_OUT_OF_SYNC;  // it went since the pins were counted
    if (!m_handedOut.AddTail(pin)) return E_OUTOFMEMORY;
    pin->AddRef();
    receiver = pin;
    return S_OK;
}
