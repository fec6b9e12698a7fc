// The functions of the layer, for a module that brings its layer along. Each is one jump through a table,
// which is filled when the module is loaded, before anything else of it runs: from the layer beside the
// module's own file. The system's way, a library that the module names as needed, looks beside the link by
// which a module was loaded, and takes whatever copy of the layer the process has already.
//
// A module whose layer can't be had, for want of the file or of memory, or because that is an older one
// without a function that the module knows, is loaded all the same, and is not attached: each function
// returns 0 there.
#include <dlfcn.h>
#include <sys/mman.h>

#include <algorithm>
#include <iterator>

#include "platform/base/Border.h"
#include "platform/loader/posix/LoadedModule.h"

namespace {

constexpr const char* kNames[] = {
#define VL_IMPORT(number, name) #name,
#include "LayerImports.inc"
#undef VL_IMPORT
};

// The table fills memory pages of its own, of the smallest size that there is, which can be closed for
// writing.
constexpr size_t kPage = 4096;
constexpr size_t kPlaces = kPage / sizeof(void*);
static_assert(std::size(kNames) <= kPlaces);

}  // namespace

extern "C" {
extern void* vl_layer_functions[kPlaces] __attribute__((visibility("hidden")));
alignas(kPage) void* vl_layer_functions[kPlaces] = {};
}

#if defined(__x86_64__)
#define VL_JUMP(number) "endbr64\n jmp *vl_layer_functions+8*" #number "(%rip)\n"
#elif defined(__aarch64__)
#define VL_JUMP(number)                                  \
    "hint #34\n adrp x16, vl_layer_functions+8*" #number \
    "\n ldr x16, [x16, :lo12:vl_layer_functions+8*" #number "]\n br x16\n"
#else
#error "A jump through a table is missing for this processor"
#endif

#define VL_IMPORT(number, name)                                                                    \
    asm(".pushsection .text\n .balign 16\n .globl " #name "\n .hidden " #name "\n .type " #name    \
        ", %function\n" #name ":\n .cfi_startproc\n" VL_JUMP(number) ".cfi_endproc\n .size " #name \
                                                                     ", . - " #name "\n .popsection");
#include "LayerImports.inc"
#undef VL_IMPORT

namespace {

void* s_layer = nullptr;

void* ReturnNothing() { return nullptr; }

// In the module's folder, or above it for one in a folder of its kind.
void* LoadLayer() {
    const std::string folder = FindLoadedModule(vl_layer_functions).folder;
    for (const char* const way : {"/", "/../"})
        if (void* const layer = LoadModule((folder + way + VL_LAYER_FILE).c_str())) return layer;
    return nullptr;
}

constexpr int kBeforeAllElse = 101;  // the least that a program may ask for

// Whether the layer has every function. Half of them would look like one that works.
bool FillFromLayer() {
    for (size_t i = 0; i < std::size(kNames); ++i)
        if (!(vl_layer_functions[i] = dlsym(s_layer, kNames[i]))) return dlerror() == nullptr;
    return true;
}

[[gnu::constructor(kBeforeAllElse)]] void FillTable() {
    s_layer = AtBorder(nullptr, &LoadLayer);
    if (!s_layer || !FillFromLayer())
        std::fill_n(vl_layer_functions, std::size(kNames), reinterpret_cast<void*>(&ReturnNothing));
    mprotect(vl_layer_functions, sizeof(vl_layer_functions), PROT_READ);
}

[[gnu::destructor(kBeforeAllElse)]] void DropLayer() {
    if (s_layer) UnloadModule(s_layer);
}

}  // namespace
