#include "platform/registry/RegistryPlaces.h"

#include <filesystem>
#include <sstream>

#include "platform/registry/RegistryTransaction.h"
#include "platform/registry/posix/UserPlaces.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kBelowData = "velto/registry.db";
constexpr const char* kBelowHome = ".local/share";

// The value of an environment variable if it is an absolute path, else an empty one.
fs::path Folder(const char* variable) {
    const char* const value = EnvironmentOf(variable);
    return value && *value == '/' ? fs::path(value) : fs::path();
}

// A file that an environment variable names; empty where it names none.
fs::path NamedBy(const char* variable) {
    const char* const value = EnvironmentOf(variable);
    std::error_code error;
    return value && *value ? fs::absolute(value, error) : fs::path();
}

fs::path UserFile() {
    fs::path folder = Folder("XDG_DATA_HOME");
    if (folder.empty()) {
        const fs::path home = Folder("HOME").empty() ? fs::path(HomeOfUser()) : Folder("HOME");
        if (home.is_absolute()) folder = home / kBelowHome;
    }
    return folder.empty() ? folder : folder / kBelowData;
}

fs::path SystemFile() {
    const fs::path named = NamedBy("VELTO_SYSTEM_REGISTRY");
    return named.empty() ? fs::path("/etc") / kBelowData : named;
}

}  // namespace

std::string FindRegistry(DWORD which) {
    if (which == VL_REGISTRY_SYSTEM) return SystemFile().string();
    const fs::path named = NamedBy("VELTO_REGISTRY");
    return (named.empty() ? UserFile() : named).string();
}

std::vector<std::string> ListRegistries() {
    std::vector<std::string> files = {FindRegistry(VL_REGISTRY_USER)};
    if (!NamedBy("VELTO_REGISTRY").empty()) return files;
    files.push_back(FindRegistry(VL_REGISTRY_SYSTEM));
    const char* const folders = EnvironmentOf("XDG_DATA_DIRS");
    std::istringstream list(folders && *folders ? folders : "/usr/local/share:/usr/share");
    list.exceptions(std::ios::badbit);  // a lack of memory is no end
    for (std::string folder; std::getline(list, folder, ':');)
        if (folder.starts_with('/')) files.push_back((fs::path(folder) / kBelowData).string());
    std::erase(files, std::string());
    return files;
}
