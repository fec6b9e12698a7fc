#include "platform/sync/Thread.h"

#include <exception>

#include "platform/base/LastError.h"
#include "platform/sync/ThreadObject.h"

HANDLE CreateThread(SECURITY_ATTRIBUTES* security, size_t stackSize, LPTHREAD_START_ROUTINE start,
                    void* argument, DWORD flags, DWORD* id) {
    if (security || !start) return SetLastError(ERROR_INVALID_PARAMETER), nullptr;
    if (stackSize != 0 || flags != 0 || id) return SetLastError(ERROR_NOT_SUPPORTED), nullptr;
    try {
        return (new ThreadObject([start, argument] { start(argument); }))->AsHandle();
    } catch (const std::exception&) {  // no memory, or the system has no thread left
        return SetLastError(ERROR_NOT_ENOUGH_MEMORY), nullptr;
    }
}
