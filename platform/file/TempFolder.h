// Where temporary files go, for all who make one: $TMPDIR, else "/tmp".
#pragma once

#include <new>
#include <string>

#include "platform/base/Types.h"

// The folder as an absolute path with "/" at its end, the system's bytes, terminated; `size` is in bytes.
// Returns its length, or, where the room is too small and nothing is written, the room needed. It isn't
// looked at whether there is such a folder. 0 with ERROR_NOT_ENOUGH_MEMORY.
VL_PLATFORM_API DWORD GetTempPathA(DWORD size, char* buffer);

// The same as a text. Throws std::bad_alloc.
inline std::string TempFolderPath() {
    std::string folder(GetTempPathA(0, nullptr), '\0');
    const DWORD length = GetTempPathA(static_cast<DWORD>(folder.size()), folder.data());
    if (length == 0) throw std::bad_alloc();
    folder.resize(length);
    return folder;
}
