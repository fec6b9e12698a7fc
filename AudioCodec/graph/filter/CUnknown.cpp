#include "AudioCodec/graph/filter/CUnknown.h"

HRESULT CUnknown::NonDelegatingQueryInterface(const GUID& iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    return iid == IID_IUnknown ? GetInterface(&m_self, object) : E_NOINTERFACE;
}

uint32_t CUnknown::NonDelegatingAddRef() { return m_references.Add(); }

uint32_t CUnknown::NonDelegatingRelease() {
    return m_references.Drop([this] {
        m_references.Begin();  // one that comes and goes in the destructor must not delete the object again
        delete this;
    });
}

HRESULT GetInterface(IUnknown* face, void** object) {
    if (!object) return E_POINTER;
    face->AddRef();
    *object = face;
    return S_OK;
}
