#include "platform/sync/Waitable.h"

#include <new>

#include "platform/base/LastError.h"
#include "platform/sync/MutexObject.h"

HANDLE CreateMutexA(SECURITY_ATTRIBUTES* security, BOOL initialOwner, const char* name) {
    if (security || name) {
        SetLastError(security ? ERROR_INVALID_PARAMETER : ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    auto* mutex = new (std::nothrow) MutexObject(initialOwner != FALSE);
    if (!mutex) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return mutex ? mutex->AsHandle() : nullptr;
}

BOOL ReleaseMutex(HANDLE mutex) {
    auto* object = HandleObject::From<MutexObject>(mutex);
    if (!object) return FALSE;
    return object->Release() || FailWith(ERROR_NOT_OWNER);
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    auto* waitable = HandleObject::From<WaitableObject>(object);
    return waitable ? waitable->Wait(milliseconds) : WAIT_FAILED;
}
