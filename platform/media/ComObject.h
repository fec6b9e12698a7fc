// What every object of the layer needs to stand behind interfaces: a count, and the way from an identifier to
// a face. Any thread may count.
#pragma once

#include <atomic>
#include <initializer_list>
#include <new>
#include <utility>

#include "platform/com/RefPtr.h"
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

    uint32_t AddRef() override { return ++m_count; }
    uint32_t Release() override {
        const uint32_t left = --m_count;
        if (left == 0) delete this;
        return left;
    }

    // Whether anyone holds it beside the one who asks.
    bool IsShared() const { return m_count > 1; }

protected:
    virtual ~ComObject() = default;

private:
    std::atomic<uint32_t> m_count{1};
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

// Ends exceptions where an interface begins.
template <class Work>
HRESULT AtInterface(Work&& work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}
