// The calls by name that stand in front of some interfaces, none of which is offered.
#pragma once

#include "platform/media/GraphInterfaces.h"

template <class Interface>
class NoDispatch : public Interface {
public:
    HRESULT GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 0;
        return S_OK;
    }
    HRESULT GetTypeInfo(UINT, DWORD, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT GetIDsOfNames(const GUID&, WCHAR**, UINT, DWORD, LONG*) override { return E_NOTIMPL; }
    HRESULT Invoke(LONG, const GUID&, DWORD, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

protected:
    ~NoDispatch() = default;
};
