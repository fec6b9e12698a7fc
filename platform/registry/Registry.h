// The registry: keys with values below two roots, kept in files that processes share. The user's own file is
// $VELTO_REGISTRY if that is set, and then no other is looked at; else "velto/registry.db" in $XDG_DATA_HOME,
// or in .local/share of his home folder, which the system knows where $HOME isn't set. It and its folders are
// made by the first that writes, for the user alone. Over the system's it lies: /etc/velto/registry.db, or
// $VELTO_SYSTEM_REGISTRY, and "velto/registry.db" in each of $XDG_DATA_DIRS.
//
// The first file in this order that has a key or value answers; one that can't be read ends the order. What
// is changed, and keys with rights to change, are those of the user's file: where something is taken out of
// it, what the system's has shows through again. A file that is no registry, or one of a later version, stays
// as it is. Each call is whole or has not been, whatever ends the process; RegistryTransaction.h makes one of
// several.
//
// Names are bytes; the case of ASCII letters in them doesn't count. A path of keys has "\" between its names.
// All functions return ERROR_SUCCESS or the platform's code: ERROR_FILE_NOT_FOUND where there is no such key
// or value, ERROR_ACCESS_DENIED without the rights to the file or the key, ERROR_INVALID_PARAMETER for what
// isn't supported, ERROR_MOD_NOT_FOUND where the database's library isn't installed, ERROR_BAD_PATHNAME for a
// path with an empty name, ERROR_BUSY when others kept the file busy for 5 seconds, ERROR_KEY_DELETED for a
// key that has been deleted, ERROR_NOT_REGISTRY_FILE and ERROR_REVISION_MISMATCH for a file that isn't
// touched. The last error stays as it is. Any thread; a key's handle may be shared.
#pragma once

#include "platform/base/Types.h"

using HKEY = struct HKEY_HANDLE*;  // a root, or a key that RegCloseKey closes

// No addresses; the platform's values.
// NOLINTBEGIN(performance-no-int-to-ptr)
inline const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(intptr_t{INT32_MIN});
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(intptr_t{INT32_MIN} + 2);
// NOLINTEND(performance-no-int-to-ptr)

using REGSAM = DWORD;  // the rights that a key is opened with
inline constexpr REGSAM KEY_QUERY_VALUE = 1;
inline constexpr REGSAM KEY_SET_VALUE = 2;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 4;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

inline constexpr DWORD REG_SZ = 1;  // the only type of values: narrow text, with or without its terminator

inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

struct SECURITY_ATTRIBUTES;  // null alone is supported

// Opens a key, and creates those of the path that don't exist. `classText` is null, `options` 0.
// `disposition`, may be null, tells whether the last key is new.
VL_PLATFORM_API LONG RegCreateKeyExA(HKEY key, const char* path, DWORD reserved, char* classText,
                                     DWORD options, REGSAM rights, SECURITY_ATTRIBUTES* security,
                                     HKEY* opened, DWORD* disposition);

// Opens a key that exists. An empty or null path opens `key` itself once more. With rights to change anything
// it is the user's own, in a file that can be written.
VL_PLATFORM_API LONG RegOpenKeyExA(HKEY key, const char* path, DWORD options, REGSAM rights, HKEY* opened);

// Deletes a key with its values; one that has keys below it returns ERROR_ACCESS_DENIED.
VL_PLATFORM_API LONG RegDeleteKeyA(HKEY key, const char* path);

// A value of a key, by a name that may be null like an empty one. The data stay as they are given.
VL_PLATFORM_API LONG RegSetValueExA(HKEY key, const char* name, DWORD reserved, DWORD type, const BYTE* data,
                                    DWORD size /*bytes*/);

// Reads a value. `type` and `data` may be null; `size` is the room for `data`, and then the value's size,
// both in bytes; ERROR_MORE_DATA if the room is too small. A text has a terminator only if it was given one.
VL_PLATFORM_API LONG RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                                      DWORD* size);

// Ends a key's handle; a root has none to end.
VL_PLATFORM_API LONG RegCloseKey(HKEY key);
