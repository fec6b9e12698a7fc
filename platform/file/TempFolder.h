// Where temporary files go: $TMPDIR, else "/tmp".
#pragma once

#include "platform/base/Types.h"

// The folder as an absolute path with "/" at its end, the system's bytes, terminated; `size` is in bytes.
// Gives its length, or, where the room is too small and nothing is written, the room needed. It isn't looked
// at whether there is such a folder.
VL_PLATFORM_API DWORD GetTempPathA(DWORD size, char* buffer);
