// What a HANDLE points to: an object that owns its resource. Handles are not validated beyond null and the
// invalid value; a handle that was closed must not be used again.
#pragma once

#include "platform/base/LastError.h"

// The value that CreateFileW returns for "no file". Elsewhere "none" is null.
// NOLINTNEXTLINE(performance-no-int-to-ptr): it is no address
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1));

class HandleObject {
public:
    // What a call asks of its handle. Each class names its own as kKind and says in its constructor all that
    // it is: cheaper than asking the run-time type in front of every read.
    enum Kind : uint32_t {
        kFile = 1,
        kWaitable = 2,
        kMutex = 4,
        kEvent = 8,
        kSemaphore = 16,
        kThread = 32,
        kMapping = 64
    };

    explicit HandleObject(uint32_t kinds) : m_kinds(kinds) {}
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;
    virtual ~HandleObject() = default;  // releases the resource

    HANDLE AsHandle() { return this; }
    // Ends one handle, and the object with its last. Where nobody says otherwise there is only one.
    virtual void Close() { delete this; }
    bool Is(uint32_t kind) const { return (m_kinds & kind) != 0; }
    // The object behind a handle if it is one of class T, otherwise null with ERROR_INVALID_HANDLE.
    template <class T>
    static T* From(HANDLE handle);

    // Any object; null and the invalid value return null with ERROR_INVALID_HANDLE.
    static HandleObject* FromAny(HANDLE handle);

private:
    const uint32_t m_kinds;
};

// Releases what the handle stands for. Returns FALSE with ERROR_INVALID_HANDLE for null and
// the invalid value.
VL_PLATFORM_API BOOL CloseHandle(HANDLE handle);

template <class T>
T* HandleObject::From(HANDLE handle) {
    HandleObject* object = FromAny(handle);
    if (object && object->Is(T::kKind)) return static_cast<T*>(object);
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}
