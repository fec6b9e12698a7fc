#include "bench/converter/MultiplyAddLimit.h"

#if defined(__x86_64__)
#include <immintrin.h>

#include "AudioCodec/wave/converter/VectorKernels.h"
#include "bench/table/Row.h"

namespace {

constexpr int kRounds = 200'000;
constexpr int kTries = 50;

// Twelve sums, so that none waits for itself; the empty asm keeps each of them where it is.
__attribute__((target("avx512f,avx512vnni"))) void MultiplyVnni() {
    __m512i sums[12];
    for (__m512i& sum : sums) sum = _mm512_setzero_si512();
    const __m512i taps = _mm512_set1_epi32(0x00010002);
    for (int i = 0; i < kRounds; ++i) {
#pragma GCC unroll 12
        for (int s = 0; s < 12; ++s) {
            sums[s] = _mm512_dpwssd_epi32(sums[s], taps, taps);
            asm volatile("" : "+v"(sums[s]));
        }
    }
}

__attribute__((target("avx2"))) void MultiplyAvx2() {
    __m256i sums[12];
    for (__m256i& sum : sums) sum = _mm256_setzero_si256();
    const __m256i taps = _mm256_set1_epi32(0x00010002);
    for (int i = 0; i < kRounds; ++i) {
#pragma GCC unroll 12
        for (int s = 0; s < 12; ++s) {
            __m256i product = taps;
            asm volatile("" : "+x"(product));
            sums[s] = _mm256_add_epi32(sums[s], _mm256_madd_epi16(product, taps));
            asm volatile("" : "+x"(sums[s]));
        }
    }
}

double LanesASecond(void (*multiply)(), int lanes) {
    double least = Timed(multiply);
    for (int i = 1; i < kTries; ++i) {
        const double seconds = Timed(multiply);
        if (seconds < least) least = seconds;
    }
    return 12.0 * kRounds * lanes / least;
}

}  // namespace

double MultiplyAddLimit(const std::string& kernel) {
    if (kernel == kAvx512VnniKernel.name && kAvx512VnniKernel.isOffered())
        return LanesASecond(MultiplyVnni, 16);
    if (kernel == kAvx2Kernel.name && kAvx2Kernel.isOffered()) return LanesASecond(MultiplyAvx2, 8);
    return 0;
}
#else
double MultiplyAddLimit(const std::string& /*kernel*/) { return 0; }
#endif
