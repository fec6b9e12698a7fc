// Loads each library that is named, with each allocation of the loading failing in turn, alone and with all
// that come after it, each time in a process of its own. The loading may fail; nothing may abort, and loaded
// again, with memory, all is there. By itself a sample of the allocations; with VL_ALL_FAULTS in the
// environment each one.
//
// Not ours: without memory for a library's thread-local data the loader itself ends the process, by 127; and
// libraries that the decoder's bring along abort where their static objects get none, so libvlmedia isn't
// tried.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/Exports.h"
#include "AudioCodec/shell/IPrivateCodecMain3.h"

namespace {

// failcall's, which is preloaded (FailCall.cpp).
const auto s_failMemory = reinterpret_cast<void (*)(long, bool)>(dlsym(RTLD_DEFAULT, "VlFailMemory"));
const auto s_memoryHasFailed = reinterpret_cast<bool (*)()>(dlsym(RTLD_DEFAULT, "VlMemoryHasFailed"));

enum Outcome : int { DONE = 10, FAILED_WELL, WRONG, ENDED_BY_THE_LOADER = 127 };

// A codec of the module, if the library is that.
Result MakeCodec(void* library) {
    const auto find = reinterpret_cast<decltype(&DllVlGetClassObject)>(dlsym(library, "DllVlGetClassObject"));
    if (!find) return RESULT_OK;
    IPrivateCodecMain3* codec = nullptr;
    const Result result = find(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, reinterpret_cast<void**>(&codec));
    if (codec) codec->Release();
    return result;
}

Outcome Load(const char* path, long from, bool lasts) {
    s_failMemory(from, lasts);
    void* const first = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    const Result result = first ? MakeCodec(first) : RESULT_NO_MEMORY;
    const bool failed = s_memoryHasFailed();
    s_failMemory(0, false);
    if (!failed) return result == RESULT_OK ? DONE : WRONG;
    if (result != RESULT_OK && result != RESULT_NO_MEMORY && result != RESULT_FAILED) return WRONG;
    if (first) dlclose(first);
    void* const again = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    return again && MakeCodec(again) == RESULT_OK && dlclose(again) == 0 ? FAILED_WELL : WRONG;
}

// False after a line that tells what went wrong.
bool LoadsOrFails(const char* path, bool lasts, int grow) {
    bool good = true;
    for (long from = 1;; from += 1 + from * grow / 2) {
        const pid_t child = fork();
        if (child == 0) std::exit(Load(path, from, lasts));
        int status = -1;
        waitpid(child, &status, 0);
        const int outcome = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
        if (outcome == DONE) return good;
        if (outcome == FAILED_WELL || outcome == ENDED_BY_THE_LOADER) continue;
        std::fprintf(stderr, "%s: allocation %ld%s: %d\n", path, from, lasts ? " and all after it" : "",
                     outcome);
        good = false;
    }
}

}  // namespace

int main(int count, char** paths) {
    if (!s_failMemory || !s_memoryHasFailed) return 2;
    const int grow = std::getenv("VL_ALL_FAULTS") ? 0 : 1;
    bool good = true;
    for (int i = 1; i < count; ++i)
        for (const bool lasts : {false, true}) good = LoadsOrFails(paths[i], lasts, grow) && good;
    return good ? 0 : 1;
}
