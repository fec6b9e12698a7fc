#include "capi/PlatformErrors.h"

#include <cerrno>

#include "platform/base/LastError.h"

namespace {

struct ErrorRow {
    DWORD platform;
    int system;
};
constexpr ErrorRow kErrors[] = {
    {ERROR_DISK_FULL, ENOSPC},
    {ERROR_FILE_TOO_LARGE, EFBIG},
    {ERROR_IO_DEVICE, EIO},
    {ERROR_ACCESS_DENIED, EACCES},
    {ERROR_WRITE_PROTECT, EROFS},
    {ERROR_NOT_ENOUGH_MEMORY, ENOMEM},
    {ERROR_SHARING_VIOLATION, EBUSY},
    {ERROR_TOO_MANY_OPEN_FILES, EMFILE},
    {ERROR_FILE_NOT_FOUND, ENOENT},
    {ERROR_PATH_NOT_FOUND, ENOTDIR},
    {ERROR_FILENAME_EXCED_RANGE, ENAMETOOLONG},
    {ERROR_INVALID_HANDLE, EBADF},
};

}  // namespace

int SystemErrorOf(DWORD platform) {
    for (const ErrorRow& row : kErrors)
        if (row.platform == platform) return row.system;
    return 0;
}

void ForgetLastError() noexcept { SetLastError(ERROR_SUCCESS); }

int LastSystemError() noexcept { return SystemErrorOf(GetLastError()); }
