#include "AudioCodec/graph/filter/CUnknown.h"

#include "AudioCodec/shell/templates/BaseImpl.h"

HRESULT CUnknown::NonDelegatingQueryInterface(const GUID& iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    return iid == IID_IUnknown ? GetInterface(&m_self, object) : E_NOINTERFACE;
}

uint32_t CUnknown::NonDelegatingAddRef() { return m_refCount.fetch_add(1, std::memory_order_relaxed) + 1; }

uint32_t CUnknown::NonDelegatingRelease() {
    const uint32_t count = m_refCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (count != 0) return count;
    // A reference that comes and goes in the destructor must not delete the object again.
    m_refCount = 1;
    if (kCountsAreFollowed) delete this;
    return 0;
}

HRESULT GetInterface(IUnknown* face, void** object) {
    if (!object) return E_POINTER;
    face->AddRef();
    *object = face;
    return S_OK;
}
