#include "platform/image/ImageLibrary.h"

#include <cstdint>
#include <mutex>
#include <utility>

#include "platform/base/Border.h"
#include "platform/image/ImageFunctions.h"
#include "platform/loader/UniqueLibrary.h"

namespace ImageLibrary {
namespace {

constexpr const char* kLibraryName = "libvlimage.so";

// All three are guarded by the lock.
std::mutex g_lock;
uint64_t g_images = 0;  // image objects that live
UniqueLibrary g_library;
const ImageFunctions* g_functions = nullptr;  // null: not started

void Start() {
    // Without memory for the path there is no library.
    UniqueLibrary library = AtBorder([](bool) { return UniqueLibrary(); },
                                     [] { return UniqueLibrary::LoadSibling(kLibraryName); });
    const auto getFunctions = library.Find<GetImageFunctions>(kImageFunctionsName);
    if (!getFunctions) return;
    g_library = std::move(library);
    g_functions = getFunctions();
}

}  // namespace

void CountImage() {
    const std::lock_guard lock(g_lock);
    ++g_images;
}

void DropImage() {
    const std::lock_guard lock(g_lock);
    if (--g_images != 0) return;
    g_functions = nullptr;
    g_library.Reset();
}

const ImageFunctions* Use() {
    const std::lock_guard lock(g_lock);
    if (!g_functions) Start();
    return g_functions;
}

}  // namespace ImageLibrary
