// Modules that a module loads and asks for functions. Any thread.
#pragma once

#include "platform/base/Types.h"

inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;  // how modules are searched for here anyway

// Any function; the caller knows the real type.
using FARPROC = void (*)();

// Loads the module at a path in the system's bytes, or counts one loading more, and returns its handle: one
// value for one module, the same that its entry gets. A path without "/" is looked for where the system
// keeps libraries. Null with ERROR_MOD_NOT_FOUND if it can't be loaded, ERROR_INVALID_PARAMETER for a `file`
// or another flag.
VL_PLATFORM_API HMODULE LoadLibraryExA(const char* path, HANDLE file, DWORD flags);

// The module's own function of that name; what only a library has that the module uses doesn't
// count. Null with ERROR_PROC_NOT_FOUND if there is none, ERROR_MOD_NOT_FOUND for a value that is no
// loaded module's handle.
VL_PLATFORM_API FARPROC GetProcAddress(HMODULE module, const char* name);

// Takes back one loading, and the module with its last. FALSE with ERROR_MOD_NOT_FOUND for a value that is no
// loaded module's handle.
VL_PLATFORM_API BOOL FreeLibrary(HMODULE module);
