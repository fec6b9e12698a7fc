// Files shown in memory, also by a name that all modules of the process share (NamedObjects.h). Always whole,
// for reading and writing, and from a file: all else is refused with ERROR_NOT_SUPPORTED. Any thread.
#pragma once

#include "platform/base/PageAccess.h"

struct SECURITY_ATTRIBUTES;  // null alone is supported

inline constexpr DWORD FILE_MAP_ALL_ACCESS = 0xF001F;

// A mapping of the first so many bytes of a file that is open for reading and writing; a shorter file grows.
// It keeps the file. `name` may be null. Null with a last error: ERROR_INVALID_PARAMETER for a size of 0,
// ERROR_INVALID_HANDLE for what is no file or a name of another kind of object, ERROR_DISK_FULL. If the
// process has a mapping of that name, the result is another handle to that one, with ERROR_ALREADY_EXISTS.
VL_PLATFORM_API HANDLE CreateFileMappingA(HANDLE file, SECURITY_ATTRIBUTES* security, DWORD protection,
                                          DWORD sizeHigh, DWORD sizeLow, const char* name);
// Another handle to the process's mapping of that name; null with ERROR_FILE_NOT_FOUND if there is none.
VL_PLATFORM_API HANDLE OpenFileMappingA(DWORD access, BOOL inherit, const char* name);

// The bytes of a mapping in memory, until UnmapViewOfFile, also after the end of the handle. `size` 0 means
// the whole. Null with a last error.
VL_PLATFORM_API void* MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                                    size_t size);
// FALSE with ERROR_INVALID_PARAMETER for what MapViewOfFile didn't return.
VL_PLATFORM_API BOOL UnmapViewOfFile(const void* view);
