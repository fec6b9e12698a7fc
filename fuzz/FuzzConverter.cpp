// Any bytes as a life of the sample-rate converter, which must be that of its definition by every kernel.
#include <cstdio>
#include <cstdlib>

#include "AudioCodec/wave/converter/KernelChoice.h"
#include "tests/wave/ConverterScript.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMost = 400;  // beyond, the definition takes too long
    for (size_t k = 0; const ConverterKernel* kernel = KernelAt(k); ++k) {
        if (!kernel->isOffered()) continue;
        const std::string difference = ConverterScript(data, size < kMost ? size : kMost).Play(*kernel);
        if (difference.empty()) continue;
        std::fprintf(stderr, "ERROR: %s, other than the definition: %s\n", kernel->name, difference.c_str());
        std::abort();
    }
    return 0;
}
