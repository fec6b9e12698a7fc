// One counted reference to anything with AddRef and Release. It says at the call who counts: Retain takes a
// reference of its own, Adopt takes over one that came with the pointer. No implicit conversions.
#pragma once

#include <utility>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

template <class T>
class RefPtr {
public:
    RefPtr() = default;
    static RefPtr Retain(T* object) {
        if (object) object->AddRef();
        return RefPtr(object);
    }
    static RefPtr Adopt(T* object) { return RefPtr(object); }

    RefPtr(const RefPtr& other) : RefPtr(Retain(other.m_object)) {}
    RefPtr(RefPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    RefPtr& operator=(RefPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~RefPtr() { Reset(); }

    void Reset() {
        if (T* object = std::exchange(m_object, nullptr)) object->Release();
    }
    // Hands the reference to the caller.
    [[nodiscard]] T* Detach() { return std::exchange(m_object, nullptr); }
    // The place for an operation to put a reference into; what was held is dropped first.
    [[nodiscard]] T** Put() {
        Reset();
        return &m_object;
    }

    T* Get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    explicit RefPtr(T* object) : m_object(object) {}

    T* m_object = nullptr;
};

}  // namespace vlacwav3
