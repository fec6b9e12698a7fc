#include "capi/handles/WriteFailure.h"

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
constexpr uint64_t kLargestFile = UINT32_MAX;

}  // namespace

void ForgetLastError() { SetLastError(ERROR_SUCCESS); }

int KnownWriteError() {
    const DWORD last = GetLastError();
    for (const ErrorRow& row : kErrors)
        if (row.platform == last) return row.system;
    return 0;
}

int FindWriteError(const Descriptor& file, uint64_t more) {
    if (const int known = KnownWriteError()) return known;
    uint64_t size = 0;
    if (file.Size(size) == 0 && size + more > kLargestFile) return EFBIG;
    uint64_t room = 0;
    return file.FreeRoom(room) == 0 && room < more ? ENOSPC : EIO;
}
