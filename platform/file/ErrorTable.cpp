#include "platform/file/ErrorTable.h"

#include <cerrno>

#include "platform/base/LastError.h"

namespace {

struct ErrorRow {
    int system;
    DWORD platform;
};

constexpr ErrorRow kErrors[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {ELOOP, ERROR_PATH_NOT_FOUND},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
    {EROFS, ERROR_WRITE_PROTECT},
    {ENXIO, ERROR_NOT_READY},
    {ENODEV, ERROR_NOT_READY},
    {EAGAIN, ERROR_SHARING_VIOLATION},  // a share marker, or another program's lease
    {EBUSY, ERROR_SHARING_VIOLATION},
    {ETXTBSY, ERROR_SHARING_VIOLATION},  // a program that runs
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
    {ENOSYS, ERROR_NOT_SUPPORTED},
    {ESPIPE, ERROR_NOT_SUPPORTED},  // a device without places
    {EEXIST, ERROR_FILE_EXISTS},
    {ENOBUFS, ERROR_INSUFFICIENT_BUFFER},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EFAULT, ERROR_INVALID_PARAMETER},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EILSEQ, ERROR_INVALID_NAME},  // a name that the file system can't hold
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {EOVERFLOW, ERROR_FILE_TOO_LARGE},
    {EIO, ERROR_IO_DEVICE},
};

}  // namespace

DWORD ErrorFromErrno(int error) {
    for (const ErrorRow& row : kErrors)
        if (row.system == error) return row.platform;
    return ERROR_GEN_FAILURE;
}
