// Linked into each target: loads what the module and its layer load on demand, for good, since the fuzzer's
// counters inside a library must not come and go.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    for (const char* library : {VL_KEPT_LIBRARIES}) {
        if (dlopen(library, RTLD_NOW | RTLD_NODELETE)) continue;
        std::fprintf(stderr, "ERROR: %s\n", dlerror());
        std::abort();
    }
    return 0;
}
