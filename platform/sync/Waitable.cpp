#include "platform/sync/Waitable.h"

#include <array>
#include <new>

#include "platform/base/LastError.h"
#include "platform/sync/EventObject.h"
#include "platform/sync/FirstCopysFunction.h"
#include "platform/sync/MutexObject.h"
#include "platform/sync/SemaphoreObject.h"

namespace {
const FirstCopysFunction<decltype(CreateMutexA)> s_createMutex("VlCreateMutexA");
const FirstCopysFunction<decltype(CreateEventA)> s_createEvent("VlCreateEventA");
const FirstCopysFunction<decltype(CreateSemaphoreA)> s_createSemaphore("VlCreateSemaphoreA");

// A new object behind its handle, as all that create one do it.
template <class Object, class... Arguments>
HANDLE Create(const SECURITY_ATTRIBUTES* security, const char* name, Arguments... arguments) {
    if (security) return SetLastError(ERROR_INVALID_PARAMETER), nullptr;
    const auto make = [&]() -> NamedObject* {
        auto* object = new (std::nothrow) Object(arguments...);
        if (!object) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return object;
    };
    return NamedObjects::CreateOrOpen(name, Object::kKind, make);
}
}  // namespace

HANDLE CreateMutexA(SECURITY_ATTRIBUTES* security, BOOL initialOwner, const char* name) {
    if (s_createMutex.IsFor(name)) return s_createMutex(security, initialOwner, name);
    return Create<MutexObject>(security, name, initialOwner != FALSE);
}

BOOL ReleaseMutex(HANDLE mutex) {
    auto* object = HandleObject::From<MutexObject>(mutex);
    if (!object) return FALSE;
    return object->Release() || FailWith(ERROR_NOT_OWNER);
}

HANDLE CreateEventA(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState, const char* name) {
    if (s_createEvent.IsFor(name)) return s_createEvent(security, manualReset, initialState, name);
    return Create<EventObject>(security, name, manualReset != FALSE, initialState != FALSE);
}

BOOL SetEvent(HANDLE event) {
    auto* object = HandleObject::From<EventObject>(event);
    if (object) object->Set();
    return object != nullptr;
}

BOOL ResetEvent(HANDLE event) {
    auto* object = HandleObject::From<EventObject>(event);
    if (object) object->Reset();
    return object != nullptr;
}

HANDLE CreateSemaphoreA(SECURITY_ATTRIBUTES* security, LONG count, LONG maximum, const char* name) {
    if (s_createSemaphore.IsFor(name)) return s_createSemaphore(security, count, maximum, name);
    if (count < 0 || maximum < 1 || count > maximum) return SetLastError(ERROR_INVALID_PARAMETER), nullptr;
    return Create<SemaphoreObject>(security, name, count, maximum);
}

BOOL ReleaseSemaphore(HANDLE semaphore, LONG added, LONG* before) {
    auto* object = HandleObject::From<SemaphoreObject>(semaphore);
    if (!object) return FALSE;
    if (added < 1) return FailWith(ERROR_INVALID_PARAMETER);
    return object->Release(added, before) || FailWith(ERROR_TOO_MANY_POSTS);
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    auto* waitable = HandleObject::From<WaitableObject>(object);
    return waitable ? WaitableObject::WaitForAny({&waitable, 1}, milliseconds) : WAIT_FAILED;
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL all, DWORD milliseconds) {
    static_assert(MAXIMUM_WAIT_OBJECTS == WaitableObject::kMostAtOnce);
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || !objects) {
        return SetLastError(ERROR_INVALID_PARAMETER), WAIT_FAILED;
    }
    if (all) return SetLastError(ERROR_NOT_SUPPORTED), WAIT_FAILED;
    std::array<WaitableObject*, MAXIMUM_WAIT_OBJECTS> waitables = {};
    for (DWORD i = 0; i < count; ++i) {
        waitables[i] = HandleObject::From<WaitableObject>(objects[i]);
        if (!waitables[i]) return WAIT_FAILED;
    }
    return WaitableObject::WaitForAny({waitables.data(), count}, milliseconds);
}
