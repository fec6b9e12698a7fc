// Objects that a thread can wait for, behind handles that CloseHandle closes. An object must not be closed
// while a thread waits for it.
//
// Whatever creates one returns null with a last error when it can't: ERROR_NOT_ENOUGH_MEMORY, or
// ERROR_INVALID_PARAMETER for security other than null. With a name, which may be null, it returns another
// handle to the object that has this name in the process, whose state stays as it is, with
// ERROR_ALREADY_EXISTS, else a new object with ERROR_SUCCESS; a name that another kind of object has returns
// null with ERROR_INVALID_HANDLE.
#pragma once

#include "platform/base/Types.h"

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED = 128;
inline constexpr DWORD WAIT_ABANDONED_0 = WAIT_ABANDONED;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

// A mutex that its owning thread may take again, as often as it then releases it. One whose owner ended with
// it is abandoned: the next wait takes it all the same, and says so.
VL_PLATFORM_API HANDLE CreateMutexA(SECURITY_ATTRIBUTES* security, BOOL initialOwner, const char* name);
// Gives back one taking. FALSE with ERROR_NOT_OWNER if the calling thread doesn't hold it.
VL_PLATFORM_API BOOL ReleaseMutex(HANDLE mutex);

// An event, which can be taken while it is set. One with automatic reset lets one wait through for each time
// that it is found set, one with manual reset all waits until ResetEvent.
VL_PLATFORM_API HANDLE CreateEventA(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState,
                                    const char* name);
VL_PLATFORM_API BOOL SetEvent(HANDLE event);
VL_PLATFORM_API BOOL ResetEvent(HANDLE event);

// A semaphore, which can be taken while its count is above 0; each wait takes 1. A count below 0 or above the
// maximum, or a maximum below 1, is ERROR_INVALID_PARAMETER.
VL_PLATFORM_API HANDLE CreateSemaphoreA(SECURITY_ATTRIBUTES* security, LONG count, LONG maximum,
                                        const char* name);
// Adds to the count; `before` (null if it isn't wanted) gets what it was. FALSE with ERROR_INVALID_PARAMETER
// for less than 1, with ERROR_TOO_MANY_POSTS, and nothing changed, when the count would pass the maximum.
VL_PLATFORM_API BOOL ReleaseSemaphore(HANDLE semaphore, LONG added, LONG* before);

// Waits until the object can be taken, `milliseconds` at most (INFINITE without end), and takes it:
// WAIT_OBJECT_0, WAIT_ABANDONED for an abandoned mutex, WAIT_TIMEOUT, or WAIT_FAILED with
// ERROR_INVALID_HANDLE for a handle that can't be waited for.
VL_PLATFORM_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);

// The same for any of 1 … MAXIMUM_WAIT_OBJECTS objects: WAIT_OBJECT_0 or WAIT_ABANDONED_0 plus the index of
// the one that was taken, the first where several can be taken. Waiting for all of them isn't supported:
// WAIT_FAILED with ERROR_NOT_SUPPORTED; ERROR_INVALID_PARAMETER for a count out of range.
VL_PLATFORM_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL all,
                                             DWORD milliseconds);
