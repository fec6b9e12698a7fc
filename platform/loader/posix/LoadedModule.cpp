#include "platform/loader/posix/LoadedModule.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <new>

namespace {

// Without memory a path isn't another path.
bool Failed(const std::error_code& error) {
    if (error == std::errc::not_enough_memory) throw std::bad_alloc();
    return static_cast<bool>(error);
}

// The folder is made real, so that the path outlives a move of the current folder or of a link; the name
// stays, so that what lies beside the module is found by the name that its users know.
std::string WholePath(const std::filesystem::path& path) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(path, error);
    if (Failed(error)) return path.string();
    const auto folder = std::filesystem::canonical(absolute.parent_path(), error);
    return Failed(error) ? absolute.string() : (folder / absolute.filename()).string();
}

std::string FolderOfFile(const std::filesystem::path& path) {
    std::error_code error;
    const auto file = std::filesystem::canonical(path, error);
    return (Failed(error) ? path : file).parent_path().string();
}

}  // namespace

LoadedModule FindLoadedModule(const void* address) {
    Dl_info info = {};
    link_map* map = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || !map) return {};
    // The program itself has no name there.
    std::error_code error;
    const std::string path = *map->l_name ? WholePath(map->l_name)
                                          : std::filesystem::read_symlink("/proc/self/exe", error).string();
    return {map, path, FolderOfFile(path)};
}

HMODULE LoadModule(const char* path) {
    void* const module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    // What failed here isn't what the host hears from dlerror. And where memory lacked, the system's dlopen
    // around this one, in which the layer is being loaded, would take the mark that was left for an address.
    if (!module) dlerror();
    return module;
}

void UnloadModule(HMODULE module) { dlclose(module); }

bool IsLoadedModule(HMODULE module) {
    struct Search {
        const link_map* first;
        HMODULE module;
    } search = {static_cast<const link_map*>(FindProgram()), module};
    // Once, inside the loader's lock: the list may not change meanwhile.
    const auto look = [](dl_phdr_info*, size_t, void* data) {
        const auto* const wanted = static_cast<const Search*>(data);
        for (const link_map* map = wanted->first; map; map = map->l_next)
            if (map == wanted->module) return 2;
        return 1;
    };
    return module && dl_iterate_phdr(look, &search) == 2;
}

void* FindOwnSymbol(HMODULE module, const char* name) {
    void* const symbol = dlsym(module, name);  // also looks into all libraries that the module uses
    Dl_info info = {};
    link_map* owner = nullptr;
    if (!symbol || dladdr1(symbol, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) == 0)
        return nullptr;
    return owner == module ? symbol : nullptr;
}

HMODULE FindProgram() {
    void* const program = dlopen(nullptr, RTLD_LAZY);
    if (program) dlclose(program);  // only counted down: a program stays
    return program;
}
