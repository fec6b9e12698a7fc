#include "AudioCodec/wave/converter/Avx512Lanes.h"
#include "AudioCodec/wave/converter/VectorKernel.h"
#include "AudioCodec/wave/converter/VectorKernels.h"

namespace {

bool IsOffered() {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq");
}

using Kernel = VectorKernel<Avx512Lanes>;

}  // namespace

const ConverterKernel kAvx512Kernel = {"avx512", IsOffered, Kernel::Produce, Kernel::Split, Kernel::Join};
