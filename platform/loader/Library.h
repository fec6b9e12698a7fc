// Modules loaded at run time, by path.
#pragma once

#include "platform/base/Types.h"

inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;  // how every module is searched for here

// Loads the module at a path (Windows-1252 text, see CodePage1252.h), or counts one more use of it. Null with
// last error 126 if it can't be loaded, 87 for a `file` or a flag that isn't known.
VL_PLATFORM_API HMODULE LoadLibraryExA(const char* path, HANDLE file, DWORD flags);

using FARPROC = void (*)();  // any function; the caller knows its type

// An exported function, or null with last error 127.
VL_PLATFORM_API FARPROC GetProcAddress(HMODULE module, const char* name);

// Drops one use of a module. 0 with last error 6 for a null module.
VL_PLATFORM_API BOOL FreeLibrary(HMODULE module);
