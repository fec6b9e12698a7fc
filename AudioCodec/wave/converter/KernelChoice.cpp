#include "AudioCodec/wave/converter/KernelChoice.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "AudioCodec/wave/converter/PortableKernel.h"
#include "AudioCodec/wave/converter/VectorKernels.h"

namespace {

constexpr const char* kVariable = "VLACWAV3_KERNEL";

constexpr const ConverterKernel* kKernels[] = {
#if defined(__x86_64__)
    &kAvx512VnniKernel, &kAvx512Kernel, &kAvx2Kernel, &kSse2Kernel,
#elif defined(__aarch64__)
    &kNeonKernel,
#endif
    &kPortableKernel};

const ConverterKernel& Choose() {
    const ConverterKernel* best = nullptr;
    for (const ConverterKernel* kernel : kKernels)
        if (!best && kernel->isOffered()) best = kernel;
    const char* const wanted = std::getenv(kVariable);
    if (!wanted || !*wanted) return *best;
    for (const ConverterKernel* kernel : kKernels)
        if (std::string_view(wanted) == kernel->name && kernel->isOffered()) return *kernel;
    std::fprintf(stderr, "%s=%s isn't offered here; %s converts.\n", kVariable, wanted, best->name);
    return *best;
}

}  // namespace

const ConverterKernel& ChosenKernel() {
    static const ConverterKernel& s_chosen = Choose();
    return s_chosen;
}

const ConverterKernel* KernelAt(size_t index) {
    return index < std::size(kKernels) ? kKernels[index] : nullptr;
}
