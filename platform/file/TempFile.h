// Files that live for a moment.
#pragma once

#include "platform/base/Types.h"

// Makes an empty file of its own name, PREFIX-xxxxxx.EXT, in the temporary folder (TempFolder.h): made
// exclusively, and for its owner's eyes alone. Writes the path with its terminator into `path`, of `room`
// characters. FALSE with a last error if it can't be made, ERROR_INSUFFICIENT_BUFFER where there is too
// little room; there is no file then.
VL_PLATFORM_API BOOL VlCreateTempFile(const WCHAR* prefix, const WCHAR* extension /*with its dot*/,
                                      WCHAR* path, DWORD room);

// Removes a file; FALSE with a last error if it can't be removed.
VL_PLATFORM_API BOOL DeleteFileW(const WCHAR* path);
