#include "platform/registry/RegistryFile.h"

#include <cerrno>
#include <filesystem>

#include "platform/base/LastError.h"
#include "platform/file/ErrorTable.h"
#include "platform/loader/UniqueLibrary.h"
#include "platform/registry/RegistryTransaction.h"
#include "platform/registry/posix/UserPlaces.h"

namespace {

namespace fs = std::filesystem;

// A store with the library that its class is in. No static object holds that: exit handlers, and threads that
// run while the process ends, ask the registry as others do.
struct LoadedStore {
    UniqueLibrary library;
    std::unique_ptr<RegistryStore> store;  // goes first
};

struct Permissions {
    uint32_t folder;
    uint32_t file;
};
constexpr Permissions PermissionsOf(DWORD which) {
    return which == VL_REGISTRY_SYSTEM ? Permissions{0755, 0644} : Permissions{0700, 0600};
}

int MakeFolders(const fs::path& folder, uint32_t mode) {
    int error = MakeFolder(folder.string(), mode);
    if (error == ENOENT && folder.has_relative_path()) {
        error = MakeFolders(folder.parent_path(), mode);
        if (error == 0) error = MakeFolder(folder.string(), mode);
    }
    return error == EEXIST ? 0 : error;
}

// Never opens the file: to close it again would end the locks that the database holds elsewhere
// in the process.
DWORD Prepare(const fs::path& file, DWORD which, RegistryAccess access, bool& isNew) {
    std::error_code error;
    if (file.empty()) return ERROR_PATH_NOT_FOUND;
    const fs::file_status status = fs::status(file, error);
    isNew = !fs::exists(status);
    if (!isNew) {
        constexpr fs::perms kAnyWrite =
            fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
        const bool writable = (status.permissions() & kAnyWrite) != fs::perms::none;
        return writable || access == RegistryAccess::Read ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
    }
    if (access != RegistryAccess::Create) return error ? ErrorFromErrno(error.value()) : ERROR_FILE_NOT_FOUND;
    const int failed = MakeFolders(file.parent_path(), PermissionsOf(which).folder);
    return failed != 0 ? ErrorFromErrno(failed) : ERROR_SUCCESS;
}

}  // namespace

DWORD OpenRegistry(const std::string& file, DWORD which, RegistryAccess access,
                   std::shared_ptr<RegistryStore>& store) {
    bool isNew = false;
    if (const DWORD error = Prepare(file, which, access, isNew)) return error;
    const auto opened = std::make_shared<LoadedStore>();
    opened->library = UniqueLibrary::LoadSibling("libvlregistry.so");
    const auto open = opened->library.Find<OpenRegistryStoreFunction>("VlOpenRegistryStore");
    if (!open) return ERROR_MOD_NOT_FOUND;
    if (const DWORD error = open(file, access != RegistryAccess::Read, opened->store)) return error;
    // While there is nothing in it. File systems that know no permissions refuse.
    std::error_code ignored;
    if (isNew) fs::permissions(file, fs::perms{PermissionsOf(which).file}, ignored);
    store = {opened, opened->store.get()};
    return ERROR_SUCCESS;
}
