// What every object of the layer needs to stand behind interfaces: a count, and the way from an identifier to
// a face. Any thread may count.
#pragma once

#include <initializer_list>
#include <utility>

#include "platform/base/Border.h"
#include "platform/base/Types.h"
#include "platform/com/RefPtr.h"
#include "platform/com/ReferenceCount.h"
#include "platform/com/Unknown.h"
#include "platform/media/MediaResults.h"

// One interface that an object shows.
struct Face {
    const GUID& iid;
    IUnknown* face;
};

// Hands out the face of an identifier with one reference; the first one also stands for IUnknown.
inline HRESULT GiveFace(std::initializer_list<Face> faces, const GUID& iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    for (const Face& row : faces) {
        if (!(row.iid == iid || iid == IID_IUnknown)) continue;
        row.face->AddRef();
        *object = row.face;
        return S_OK;
    }
    return E_NOINTERFACE;
}

// An object that counts itself and goes with its last reference. It is born with one, see Make.
template <class... Faces>
class ComObject : public Faces... {
public:
    ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    uint32_t AddRef() override { return m_references.Add(); }
    uint32_t Release() override {
        return m_references.Drop([this] { delete this; });
    }

    // Whether anyone holds it beside the one who asks.
    bool IsShared() const { return m_references.IsShared(); }

protected:
    virtual ~ComObject() = default;

private:
    ReferenceCount m_references{1};
};

template <class T, class... Arguments>
RefPtr<T> Make(Arguments&&... arguments) {
    return RefPtr<T>::Adopt(new T(std::forward<Arguments>(arguments)...));
}

// The face of another object, or null.
template <class T>
RefPtr<T> FaceOf(IUnknown* object, const GUID& iid) {
    void* face = nullptr;
    if (!object || FAILED(object->QueryInterface(iid, &face))) return {};
    return RefPtr<T>::Adopt(static_cast<T*>(face));
}

// What an exception means where an interface begins, for AtBorder.
constexpr HRESULT ResultOfThrow(bool noMemory) { return noMemory ? E_OUTOFMEMORY : E_FAIL; }
