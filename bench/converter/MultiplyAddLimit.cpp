#include "bench/converter/MultiplyAddLimit.h"

#if defined(__x86_64__)
#include <immintrin.h>

#include "AudioCodec/wave/converter/VectorKernels.h"
#include "bench/table/Row.h"

namespace {

constexpr int kRounds = 200'000;
constexpr int kTries = 50;

// Twelve sums, so that none waits for itself, each named, so that the compiler keeps it in a register.
__attribute__((target("avx512f,avx512vnni"))) void MultiplyVnni() {
    const __m512i taps = _mm512_set1_epi32(0x00010002);
    __m512i a = taps, b = taps, c = taps, d = taps, e = taps, f = taps;
    __m512i g = taps, h = taps, i = taps, j = taps, k = taps, l = taps;
    for (int round = 0; round < kRounds; ++round) {
        asm volatile(
            "vpdpwssd %12, %12, %0\n vpdpwssd %12, %12, %1\n vpdpwssd %12, %12, %2\n"
            "vpdpwssd %12, %12, %3\n vpdpwssd %12, %12, %4\n vpdpwssd %12, %12, %5\n"
            "vpdpwssd %12, %12, %6\n vpdpwssd %12, %12, %7\n vpdpwssd %12, %12, %8\n"
            "vpdpwssd %12, %12, %9\n vpdpwssd %12, %12, %10\n vpdpwssd %12, %12, %11\n"
            : "+v"(a), "+v"(b), "+v"(c), "+v"(d), "+v"(e), "+v"(f), "+v"(g), "+v"(h), "+v"(i), "+v"(j),
              "+v"(k), "+v"(l)
            : "v"(taps));
    }
}

__attribute__((target("avx2"))) void MultiplyAvx2() {
    const __m256i taps = _mm256_set1_epi32(0x00010002);
    __m256i a = taps, b = taps, c = taps, d = taps, e = taps, f = taps, x = taps, y = taps;
    for (int round = 0; round < 2 * kRounds; ++round) {
        asm volatile(
            "vpmaddwd %8, %8, %6\n vpaddd %6, %0, %0\n vpmaddwd %8, %8, %7\n vpaddd %7, %1, %1\n"
            "vpmaddwd %8, %8, %6\n vpaddd %6, %2, %2\n vpmaddwd %8, %8, %7\n vpaddd %7, %3, %3\n"
            "vpmaddwd %8, %8, %6\n vpaddd %6, %4, %4\n vpmaddwd %8, %8, %7\n vpaddd %7, %5, %5\n"
            : "+x"(a), "+x"(b), "+x"(c), "+x"(d), "+x"(e), "+x"(f), "+x"(x), "+x"(y)
            : "x"(taps));
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
