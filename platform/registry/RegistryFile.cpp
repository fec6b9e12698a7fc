#include "platform/registry/RegistryFile.h"

#include <cstdlib>
#include <filesystem>

#include "platform/base/LastError.h"
#include "platform/file/ErrorTable.h"
#include "platform/loader/UniqueLibrary.h"

namespace {

namespace fs = std::filesystem;

// The value of an environment variable if it is an absolute path, else an empty one.
fs::path Folder(const char* variable) {
    const char* const value = std::getenv(variable);
    return value && *value == '/' ? fs::path(value) : fs::path();
}

fs::path FindFile() {
    if (const char* const named = std::getenv("VELTO_REGISTRY"); named && *named) {
        std::error_code error;
        return fs::absolute(named, error);
    }
    fs::path folder = Folder("XDG_DATA_HOME");
    if (folder.empty() && !Folder("HOME").empty()) folder = Folder("HOME") / ".local/share";
    return folder.empty() ? folder : folder / "velto/registry.db";
}

// Never opens the file: to close it again would end the locks that the database holds elsewhere
// in the process.
DWORD Prepare(const fs::path& file, bool forWriting) {
    std::error_code error;
    if (file.empty()) return ERROR_PATH_NOT_FOUND;
    const fs::file_status status = fs::status(file, error);
    if (fs::exists(status)) {
        constexpr fs::perms kAnyWrite =
            fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
        const bool refused = forWriting && (status.permissions() & kAnyWrite) == fs::perms::none;
        return refused ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
    }
    if (!forWriting) return error ? ErrorFromErrno(error.value()) : ERROR_FILE_NOT_FOUND;
    fs::create_directories(file.parent_path(), error);
    return error ? ErrorFromErrno(error.value()) : ERROR_SUCCESS;
}

}  // namespace

DWORD OpenRegistry(bool forWriting, std::unique_ptr<RegistryStore>& store) {
    const fs::path file = FindFile();
    if (const DWORD error = Prepare(file, forWriting)) return error;
    // For as long as this library stands.
    static const UniqueLibrary library = UniqueLibrary::LoadSibling("libvlregistry.so");
    static const auto open = library.Find<OpenRegistryStoreFunction>("VlOpenRegistryStore");
    return open ? open(file.string(), forWriting, store) : ERROR_MOD_NOT_FOUND;
}
