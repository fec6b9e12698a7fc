// A handle that closes itself. "None" has one form here, null: failure values are folded where a
// handle is born.
#pragma once

#include <memory>

#include "platform/base/HandleObject.h"

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};

using UniqueHandle = std::unique_ptr<void, HandleCloser>;

// Takes over what CreateFileW gave.
inline UniqueHandle TakeFile(HANDLE handle) {
    return UniqueHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}
