// One counted reference to anything with AddRef and Release. It says at the call who counts: Retain takes a
// reference of its own, Adopt takes over one that came with the pointer. No implicit conversions.
#pragma once

#include <utility>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

template <class T>
class RefPtr {
public:
    // Refers to nothing.
    RefPtr() = default;
    // Takes a reference of its own.
    static RefPtr Retain(T* object) {
        if (object) object->AddRef();
        return RefPtr(object);
    }
    // Takes over a reference that came with the pointer.
    static RefPtr Adopt(T* object) { return RefPtr(object); }

    // A copy counts for itself; what is moved is counted once.
    RefPtr(const RefPtr& other) : RefPtr(Retain(other.m_object)) {}
    RefPtr(RefPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    RefPtr& operator=(RefPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~RefPtr() { Reset(); }

    // Drops the reference.
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

    // The object, still referred to; null for none.
    T* Get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    explicit RefPtr(T* object) : m_object(object) {}

    T* m_object = nullptr;
};

}  // namespace vlacwav3
