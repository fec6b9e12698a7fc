#include "AudioCodec/wave/converter/Avx512Lanes.h"
#include "AudioCodec/wave/converter/VectorKernel.h"
#include "AudioCodec/wave/converter/VectorKernels.h"

namespace {

struct Avx512VnniLanes : Avx512Lanes {
    static Ints MultiplyAdd(Ints sum, Pair samples, Pairs taps) {
        Ints next = _mm512_dpwssd_epi32(sum, samples, taps);
        asm("" : "+v"(next));  // g++ 12 moves each sum to another register and back without it
        return next;
    }
};

bool IsOffered() { return kAvx512Kernel.isOffered() && __builtin_cpu_supports("avx512vnni"); }

using Kernel = VectorKernel<Avx512VnniLanes>;

}  // namespace

const ConverterKernel kAvx512VnniKernel = {"avx512vnni", IsOffered, Kernel::Produce, Kernel::Split,
                                           Kernel::Join};
