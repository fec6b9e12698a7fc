// Any bytes as a life of the sample-rate converter, which must be that of its definition. The environment's
// VLACWAV3_KERNEL names the kernel.
#include <cstdio>
#include <cstdlib>

#include "tests/wave/ConverterScript.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMost = 400;  // beyond, the definition takes too long
    const std::string difference = ConverterScript(data, size < kMost ? size : kMost).Play();
    if (difference.empty()) return 0;
    std::fprintf(stderr, "ERROR: other than the definition: %s\n", difference.c_str());
    std::abort();
}
