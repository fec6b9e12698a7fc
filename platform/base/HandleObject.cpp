#include "platform/base/HandleObject.h"

#include "platform/base/LastError.h"

HandleObject* HandleObject::FromAny(HANDLE handle) {
    SetLastError(ERROR_INVALID_HANDLE);
    return handle == INVALID_HANDLE_VALUE ? nullptr : static_cast<HandleObject*>(handle);
}

BOOL CloseHandle(HANDLE handle) {
    HandleObject* object = HandleObject::FromAny(handle);
    if (!object) return FALSE;
    delete object;
    return TRUE;
}
