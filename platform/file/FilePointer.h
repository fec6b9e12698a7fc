// The place and the size of a file in one number of 64 bits, over the halves that the calls take and give.
#pragma once

#include "platform/base/LastError.h"
#include "platform/file/File.h"

// Moves the handle's place; `reached`, may be null, gets the new one in bytes from the start. False with a
// last error, and nothing moved or written. A success leaves the last error at 0.
inline bool MoveFilePointer(HANDLE file, int64_t distance /*bytes*/, DWORD method,
                            int64_t* reached = nullptr) {
    const auto bits = static_cast<uint64_t>(distance);
    auto high = static_cast<LONG>(bits >> 32);
    SetLastError(ERROR_SUCCESS);
    const DWORD low = SetFilePointer(file, static_cast<LONG>(static_cast<DWORD>(bits)), &high, method);
    // The value that tells of a failure is also the low half of a place.
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS) return false;
    if (reached) *reached = static_cast<int64_t>(uint64_t{static_cast<DWORD>(high)} << 32 | low);
    return true;
}

// Where the handle of an open file stands, in bytes from the start. That can't fail, so it does without the
// last error.
inline int64_t TellFilePointer(HANDLE file) {
    LONG high = 0;
    const DWORD low = SetFilePointer(file, 0, &high, FILE_CURRENT);
    return static_cast<int64_t>(uint64_t{static_cast<DWORD>(high)} << 32 | low);
}

// The size of an open file in bytes.
inline uint64_t SizeOfFile(HANDLE file) {
    DWORD high = 0;
    const DWORD low = GetFileSize(file, &high);
    return uint64_t{high} << 32 | low;
}
