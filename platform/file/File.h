// Files as the module opens them: share modes hold between handles, threads and processes, a handle knows its
// own 64-bit position, and reads and writes are whole. Synchronous only; regular files and character devices,
// no directories, pipes or security records: what is not supported is refused with a last error. Threads may
// share a file through handles of their own, a handle is used by one at a time.
#pragma once

#include "platform/base/Types.h"

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;

inline constexpr DWORD FILE_SHARE_READ = 1;   // others may read meanwhile
inline constexpr DWORD FILE_SHARE_WRITE = 2;  // others may write meanwhile

inline constexpr DWORD CREATE_NEW = 1;     // fails with 80 where the file exists
inline constexpr DWORD CREATE_ALWAYS = 2;  // creates, or empties what is there
inline constexpr DWORD OPEN_EXISTING = 3;  // fails with 2 where there is no file
inline constexpr DWORD OPEN_ALWAYS = 4;    // opens, or creates

inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;  // a hint, not heeded
// The file is a new one for its owner alone and goes with its last handle, also when the process is killed:
// it has no name from the start. What others put at the path doesn't matter and stays as it is.
inline constexpr DWORD FILE_FLAG_DELETE_ON_CLOSE = 0x4000000;

inline constexpr DWORD FILE_BEGIN = 0;    // from the start
inline constexpr DWORD FILE_CURRENT = 1;  // from the current place
inline constexpr DWORD FILE_END = 2;      // from the end

inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;

struct SECURITY_ATTRIBUTES;  // null alone is supported
struct OVERLAPPED;           // null alone is supported

// Opens or creates a file. Returns a handle, or INVALID_HANDLE_VALUE with a last error:
// ERROR_SHARING_VIOLATION for a share mode that another handle of any process contradicts,
// ERROR_ACCESS_DENIED for a file or folder that may not be accessed so, also for writing to a file that has
// no write permission at all, ERROR_INVALID_PARAMETER for an unknown bit, no access, CREATE_ALWAYS without
// GENERIC_WRITE, or FILE_FLAG_DELETE_ON_CLOSE with OPEN_EXISTING. A file is never emptied before its share
// mode is held. Devices have no share mode.
VL_PLATFORM_API HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share,
                                   SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flagsAndAttributes,
                                   HANDLE templateFile);

// The same for a path in the system's bytes: through the code page some paths would come out as others.
VL_PLATFORM_API HANDLE CreateFileA(const char* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                                   DWORD disposition, DWORD flagsAndAttributes, HANDLE templateFile);

// Reads up to `size` bytes at the handle's place and moves it. Fewer than asked, with success, means the end
// of the file. 0 is failure; *done is then 0. A handle that only reads and lets nobody write reads ahead: a
// change by those who don't heed share modes may be seen later.
VL_PLATFORM_API BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* done, OVERLAPPED* overlapped);

// Writes `size` bytes at the handle's place and moves it. On failure, such as 112 for a full disk, *done
// tells how many bytes reached the file.
VL_PLATFORM_API BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* done,
                               OVERLAPPED* overlapped);

// Moves the handle's place. `distanceHigh`, may be null: in the high 32 bits of the distance, out those of
// the new place. Without it the distance is a signed 32-bit number. Returns the low 32 bits of the new place,
// which may lie after the file's end, or INVALID_SET_FILE_POINTER with a last error, the place unmoved:
// ERROR_NEGATIVE_SEEK for a place before the start, ERROR_INVALID_PARAMETER for one that 64 bits, or 32
// without `distanceHigh`, can't tell. Since that value is also a place, a caller with `distanceHigh` clears
// the last error first; success leaves it alone.
VL_PLATFORM_API DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method);

// The file's size in bytes: low half as the result, high half through `high`, may be null.
VL_PLATFORM_API DWORD GetFileSize(HANDLE file, DWORD* high);

// Cuts the file at the handle's place, or lengthens it to there.
VL_PLATFORM_API BOOL SetEndOfFile(HANDLE file);

// Waits until what was written is on the medium.
VL_PLATFORM_API BOOL FlushFileBuffers(HANDLE file);
