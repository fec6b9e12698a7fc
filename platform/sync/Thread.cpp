#include "platform/sync/Thread.h"

#include "platform/base/Border.h"
#include "platform/base/LastError.h"
#include "platform/sync/ThreadObject.h"

HANDLE CreateThread(SECURITY_ATTRIBUTES* security, size_t stackSize, LPTHREAD_START_ROUTINE start,
                    void* argument, DWORD flags, DWORD* id) {
    if (security || !start) return SetLastError(ERROR_INVALID_PARAMETER), nullptr;
    if (stackSize != 0 || flags != 0 || id) return SetLastError(ERROR_NOT_SUPPORTED), nullptr;
    // No memory, or the system has no thread left.
    const auto onThrow = [](bool) -> HANDLE { return SetLastError(ERROR_NOT_ENOUGH_MEMORY), nullptr; };
    return AtBorder(onThrow,
                    [&] { return (new ThreadObject([start, argument] { start(argument); }))->AsHandle(); });
}
