// The wall of the library: no exception leaves a function, and each failure leaves its record in the handle.
#pragma once

#include <new>

#include "capi/ErrorRecord.h"
#include "capi/PlatformErrors.h"
#include "platform/base/Border.h"

// Runs `work`, which returns a code or throws, for a handle with a field `error`. VLW_BAD_ARGUMENT without a
// handle.
template <class Handle, class Work>
vlw_code Guarded(Handle* handle, Work&& work) noexcept {
    if (!handle) return VLW_BAD_ARGUMENT;
    handle->error.Clear();
    ForgetLastError();
    const CancellationOff off;
    try {
        const vlw_code code = work();
        return code < VLW_OK ? handle->error.Set(code) : code;
    } catch (const Failure& failure) {
        return handle->error.Set(failure);
    } catch (const std::bad_alloc&) {
        return handle->error.Set(VLW_NO_MEMORY);
    } catch (...) {
        return handle->error.Set(VLW_FAILED);
    }
}

// Makes a handle. VLW_OK, VLW_BAD_ARGUMENT for a null receiver, VLW_NO_MEMORY, the receiver then null.
template <class Handle, class... Arguments>
vlw_code NewHandle(Handle** receiver, const Arguments&... arguments) noexcept {
    if (!receiver) return VLW_BAD_ARGUMENT;
    const CancellationOff off;
    try {
        *receiver = new Handle(arguments...);
        return VLW_OK;
    } catch (...) {
        *receiver = nullptr;
        return VLW_NO_MEMORY;
    }
}
