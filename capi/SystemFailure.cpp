#include "capi/SystemFailure.h"

#include <cerrno>
#include <cstring>

namespace {

struct ErrorRow {
    int system;
    vlw_code code;
};
constexpr ErrorRow kErrors[] = {
    {ENOENT, VLW_NOT_FOUND},    {ENOTDIR, VLW_NOT_FOUND},   {EACCES, VLW_NO_PERMISSION},
    {EPERM, VLW_NO_PERMISSION}, {EROFS, VLW_NO_PERMISSION}, {EEXIST, VLW_EXISTS},
    {ENOSPC, VLW_NO_SPACE},     {EDQUOT, VLW_NO_SPACE},     {ENOMEM, VLW_NO_MEMORY},
    {EFBIG, VLW_TOO_LARGE},     {EBUSY, VLW_IN_USE},        {ETXTBSY, VLW_IN_USE},
};

}  // namespace

vlw_code SystemCode(int error) {
    for (const ErrorRow& row : kErrors)
        if (row.system == error) return row.code;
    return VLW_SYSTEM;
}

std::string SystemReason(int error) {
    const char* const text = strerrordesc_np(error);
    return text ? text : "unknown error " + std::to_string(error);
}

Failure SystemFailure(int error, const std::string& what, const std::string& path) {
    return {SystemCode(error), what + " failed: " + SystemReason(error) + '.', path, error};
}
