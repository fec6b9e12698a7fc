// Threads behind handles, which a wait takes when their function has returned.
#pragma once

#include "platform/sync/Waitable.h"

using LPTHREAD_START_ROUTINE = DWORD (*)(void* argument);

// Runs `start` with `argument` on a new thread; what it returns is not kept. Closing the handle leaves a
// running thread running; closing it after a wait for the thread leaves nothing of the thread. Null with
// ERROR_NOT_ENOUGH_MEMORY if there can be no thread, ERROR_INVALID_PARAMETER for a null start or security
// other than null. Only threads of the default stack size (0) that start at once (no flags) and whose number
// nobody asks for are supported; all else is ERROR_NOT_SUPPORTED.
VL_PLATFORM_API HANDLE CreateThread(SECURITY_ATTRIBUTES* security, size_t stackSize /*bytes*/,
                                    LPTHREAD_START_ROUTINE start, void* argument, DWORD flags, DWORD* id);
