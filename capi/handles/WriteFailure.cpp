#include "capi/handles/WriteFailure.h"

#include <cerrno>

#include "capi/PlatformErrors.h"

int FindWriteError(const Descriptor& file, uint64_t more) {
    if (const int known = LastSystemError()) return known;
    uint64_t size = 0;
    if (file.Size(size) == 0 && size + more > kLargestFile) return EFBIG;
    uint64_t room = 0;
    return file.FreeRoom(room) == 0 && room < more ? ENOSPC : EIO;
}
