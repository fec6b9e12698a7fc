// Objects that a thread can wait for, behind handles that CloseHandle closes.
#pragma once

#include "platform/base/Types.h"

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;

// A mutex that its owning thread may take again, as often as it then releases it. Null with a last error if
// there is no memory; security other than null gives 87. Names are not supported yet: a name other than null
// gives null with last error 50.
VL_PLATFORM_API HANDLE CreateMutexA(SECURITY_ATTRIBUTES* security, BOOL initialOwner, const char* name);

// Gives back one taking. 0 with last error 288 if the calling thread doesn't hold it.
VL_PLATFORM_API BOOL ReleaseMutex(HANDLE mutex);

// Waits until the object is to be had, `milliseconds` at most (INFINITE without end), and takes it:
// WAIT_OBJECT_0, WAIT_TIMEOUT, or WAIT_FAILED with last error 6 for a handle that can't be waited for.
VL_PLATFORM_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);
