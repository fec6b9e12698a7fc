// Where modules lie.
#pragma once

#include "platform/base/Types.h"

// The whole path of a module that has been attached (ModuleEntry.h), terminated; `size` is in units. Returns
// its length, or 0 with ERROR_INVALID_HANDLE for another module, ERROR_NOT_ENOUGH_MEMORY. One too long is
// cut: the result is then `size`, with ERROR_INSUFFICIENT_BUFFER.
VL_PLATFORM_API DWORD GetModuleFileNameW(HMODULE module, WCHAR* buffer, DWORD size);

// The same for the folder of the module's own file, where that was loaded by a link to it.
VL_PLATFORM_API DWORD VlGetModuleFolder(HMODULE module, WCHAR* buffer, DWORD size);

// The path in the system's bytes, so that the file is found by it whatever its name: the code page lacks most
// characters. `size` is in bytes.
VL_PLATFORM_API DWORD GetModuleFileNameA(HMODULE module, char* buffer, DWORD size);
