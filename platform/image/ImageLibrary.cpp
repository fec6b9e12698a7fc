#include "platform/image/ImageLibrary.h"

#include <cstdint>
#include <utility>

#include "platform/base/Border.h"
#include "platform/image/ImageFunctions.h"
#include "platform/loader/UniqueLibrary.h"
#include "platform/sync/ForkPass.h"

namespace ImageLibrary {
namespace {

constexpr const char* kLibraryName = "libvlimage.so";

Mutex g_lock;
uint64_t g_images VL_GUARDED_BY(g_lock) = 0;        // image objects that live
HMODULE g_library VL_GUARDED_BY(g_lock) = nullptr;  // no owner: exit handlers use images as others do
const ImageFunctions* g_functions VL_GUARDED_BY(g_lock) = nullptr;  // null: not started

void Start() VL_REQUIRES(g_lock) {
    // Without memory for the path there is no library.
    UniqueLibrary library = AtBorder([](bool) { return UniqueLibrary(); },
                                     [] { return UniqueLibrary::LoadSibling(kLibraryName); });
    const auto getFunctions = library.Find<GetImageFunctions>(kImageFunctionsName);
    if (!getFunctions) return;
    g_library = library.Detach();
    g_functions = getFunctions();
}

}  // namespace

void CountImage() {
    const ProcessLock lock(g_lock);
    ++g_images;
}

void DropImage() {
    const ProcessLock lock(g_lock);
    if (--g_images != 0) return;
    g_functions = nullptr;
    UniqueLibrary::Adopt(std::exchange(g_library, nullptr)).Reset();
}

const ImageFunctions* Use() {
    const ProcessLock lock(g_lock);
    if (!g_functions) Start();
    return g_functions;
}

}  // namespace ImageLibrary
