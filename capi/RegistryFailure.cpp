#include "capi/RegistryFailure.h"

#include <array>
#include <new>

#include "capi/PlatformErrors.h"
#include "capi/SystemFailure.h"
#include "platform/base/LastError.h"
#include "platform/registry/RegistryTransaction.h"

namespace {

struct ReasonRow {
    DWORD platform;
    vlw_code code;
    const char* reason;
};
// What the system has no words for.
constexpr ReasonRow kReasons[] = {
    {ERROR_BUSY, VLW_IN_USE, "another program has held it for 5 seconds"},
    {ERROR_REVISION_MISMATCH, VLW_UNSUPPORTED, "it was written by a newer version"},
    {ERROR_NOT_REGISTRY_FILE, VLW_DAMAGED, "it is no registry of this system"},
    {ERROR_REGISTRY_CORRUPT, VLW_DAMAGED, "it is damaged"},
    {ERROR_REGISTRY_IO_FAILED, VLW_SYSTEM, "reading or writing it failed"},
    {ERROR_MOD_NOT_FOUND, VLW_SYSTEM, "the library for the registry can't be loaded"},
    {ERROR_BAD_PATHNAME, VLW_SYSTEM, "the module's path is too long to be entered"},
    {ERROR_GEN_FAILURE, VLW_SYSTEM, "the module didn't change it"},
};

std::string PathOf(DWORD which) {
    std::array<char, 4096> path{};
    const DWORD size = VlGetRegistryPath(which, path.data(), path.size());
    return size != 0 ? path.data() : "";
}

}  // namespace

Failure RegistryFailure(LONG error, const std::string& what, DWORD which) {
    const auto code = static_cast<DWORD>(error);
    if (code == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
    const std::string file = PathOf(which);
    if (file.empty()) return {VLW_SYSTEM, what + " failed: the user has no home folder for a registry."};
    const std::string start = what + " failed: " + file + ": ";
    for (const ReasonRow& row : kReasons)
        if (row.platform == code) return {row.code, start + row.reason + '.', file};
    const int system = SystemErrorOf(code);
    if (system == 0) return {VLW_SYSTEM, start + "error " + std::to_string(code) + '.', file};
    return {SystemCode(system), start + SystemReason(system) + '.', file, system};
}
