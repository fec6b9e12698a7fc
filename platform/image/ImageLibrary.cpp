#include "platform/image/ImageLibrary.h"

#include <dlfcn.h>

#include <cstdint>
#include <exception>
#include <filesystem>
#include <mutex>

#include "platform/image/ImageFunctions.h"
#include "platform/loader/posix/LoadedModule.h"

namespace ImageLibrary {
namespace {

constexpr const char* kLibraryName = "libvlimage.so";

// All three are guarded by the lock.
std::mutex g_lock;
uint64_t g_images = 0;      // image objects that live
void* g_library = nullptr;  // null: not started
const ImageFunctions* g_functions = nullptr;

void Start() {
    const auto own = std::filesystem::path(FindLoadedModule(reinterpret_cast<const void*>(&Use)).path);
    void* const library = dlopen((own.parent_path() / kLibraryName).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) return;
    const auto getFunctions = reinterpret_cast<GetImageFunctions>(dlsym(library, kImageFunctionsName));
    if (!getFunctions) {
        dlclose(library);
        return;
    }
    g_library = library;
    g_functions = getFunctions();
}

void Stop() {
    dlclose(g_library);
    g_library = nullptr;
    g_functions = nullptr;
}

}  // namespace

void CountImage() {
    const std::lock_guard lock(g_lock);
    ++g_images;
}

void DropImage() {
    const std::lock_guard lock(g_lock);
    if (--g_images == 0 && g_library) Stop();
}

const ImageFunctions* Use() {
    const std::lock_guard lock(g_lock);
    try {
        if (!g_library) Start();
    } catch (const std::exception&) {  // no memory for the path
        return nullptr;
    }
    return g_functions;
}

}  // namespace ImageLibrary
