// A program that registers the module, or saves an image, while it ends, as its first argument says; it knows
// the module by name only, as hosts do.
#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "platform/image/Image.h"

namespace {

void* s_module = nullptr;
std::atomic<int> s_registered = 0;  // times, by the thread

void Load() { s_module = dlopen(VL_MODULE, RTLD_NOW | RTLD_LOCAL); }

void Call(const char* name) {
    void* const found = s_module ? dlsym(s_module, name) : nullptr;
    if (!found || reinterpret_cast<int32_t (*)()>(found)() != 1) std::_Exit(2);
}

// Never deleted: it is there when the static objects of all libraries have gone.
CImage* s_image = nullptr;

void SaveImage() {
    if (s_image->Save(u"/dev/null", &IMAGE_FORMAT_BMP) != 0) std::_Exit(4);
}

void MakeImage() {
    s_image = reinterpret_cast<CImage* (*)()>(dlsym(s_module, "VlCreateImage"))();
    if (!s_image->Create(1, 1, 24, 0)) std::_Exit(3);
    SaveImage();
}

void RegisterInHandler() {
    if (!s_module) Load();
    Call("DllRegisterServer");
}

void RegisterForEver() {
    for (;; ++s_registered) Call("DllRegisterServer");
}

}  // namespace

int main(int, char** argv) {
    const std::string when = argv[1];
    if (when == "first handler" || when == "unloaded") std::atexit(&RegisterInHandler);
    if (when == "image") std::atexit(&SaveImage);
    // Runs last: the thread goes on when all static objects are gone.
    if (when == "thread")
        std::atexit([] {
            for (const int before = s_registered; s_registered < before + 3;)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        });
    Load();
    Call("DllRegisterServer");
    Call("DllUnregisterServer");
    if (when == "image") MakeImage();
    if (when == "last handler") std::atexit(&RegisterInHandler);
    if (when == "thread") std::thread(&RegisterForEver).detach();
    if (when == "unloaded") {
        dlclose(s_module);
        s_module = nullptr;
    }
    return 0;
}
