// The factory of one class, for a module's DllGetClassObject.
#pragma once

#include "platform/com/ClassFactory.h"
#include "platform/media/ComObject.h"

using MakeObject = HRESULT (*)(const GUID& iid, void** object);

// Makes a T and returns its face.
template <class T>
HRESULT MakeInstance(const GUID& iid, void** object) {
    return AtBorder(ResultOfThrow, [&] { return Make<T>()->QueryInterface(iid, object); });
}

class ClassObject final : public ComObject<IClassFactory> {
public:
    explicit ClassObject(MakeObject make) : m_make(make) {}

    HRESULT QueryInterface(const GUID& iid, void** object) override {
        return GiveFace({{IID_IClassFactory, this}}, iid, object);
    }
    HRESULT CreateInstance(IUnknown* outer, const GUID& iid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        return outer ? CLASS_E_NOAGGREGATION : m_make(iid, object);
    }
    HRESULT LockServer(BOOL) override { return S_OK; }  // modules stay loaded anyhow

private:
    MakeObject m_make;
};

struct ClassRow {
    const GUID& id;
    MakeObject make;
};

// What DllGetClassObject does, for the classes of a module.
inline HRESULT GetClassObject(std::initializer_list<ClassRow> classes, const GUID& classId, const GUID& iid,
                              void** factory) {
    if (!factory) return E_POINTER;
    *factory = nullptr;
    for (const ClassRow& row : classes) {
        if (!(row.id == classId)) continue;
        return AtBorder(ResultOfThrow,
                        [&] { return Make<ClassObject>(row.make)->QueryInterface(iid, factory); });
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}
