#include "platform/base/HandleObject.h"

#include "platform/base/LastError.h"

HandleObject* HandleObject::FromAny(HANDLE handle) {
    if (handle && handle != INVALID_HANDLE_VALUE) return static_cast<HandleObject*>(handle);
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

BOOL CloseHandle(HANDLE handle) {
    HandleObject* object = HandleObject::FromAny(handle);
    if (!object) return FALSE;
    object->Close();
    return TRUE;
}
