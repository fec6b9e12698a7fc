#include "host/plot/Correlation.h"

#include <algorithm>
#include <bit>

#include "host/plot/Fftw.h"

namespace {

// The spectrum of samples with silence after them.
FftwComplexes SpectrumOf(const float* samples, size_t count, size_t size) {
    FftwReals padded = FromFftw<FftwReals>(fftwf_alloc_real(size));
    FftwComplexes spectrum = FromFftw<FftwComplexes>(fftwf_alloc_complex(size / 2 + 1));
    const FftwPlan plan = FromFftw<FftwPlan>(
        fftwf_plan_dft_r2c_1d(static_cast<int>(size), padded.get(), spectrum.get(), FFTW_ESTIMATE));
    std::fill(std::copy_n(samples, count, padded.get()), padded.get() + size, 0.0f);
    fftwf_execute(plan.get());
    return spectrum;
}

}  // namespace

void Correlate(const float* a, size_t countA, const float* b, size_t countB, float* sums) {
    // What the transform wraps around is past the last shift: i + k stays below countB.
    const size_t size = std::bit_ceil(countB);
    const FftwComplexes spectrumA = SpectrumOf(a, countA, size);
    const FftwComplexes spectrumB = SpectrumOf(b, countB, size);
    const float scale = 1.0f / static_cast<float>(size);
    for (size_t i = 0; i <= size / 2; ++i) {
        const auto& [realA, imaginaryA] = spectrumA[i];
        auto& [realB, imaginaryB] = spectrumB[i];
        const float real = realA * realB + imaginaryA * imaginaryB;
        imaginaryB = (realA * imaginaryB - imaginaryA * realB) * scale;
        realB = real * scale;
    }
    const FftwReals all = FromFftw<FftwReals>(fftwf_alloc_real(size));
    const FftwPlan back = FromFftw<FftwPlan>(
        fftwf_plan_dft_c2r_1d(static_cast<int>(size), spectrumB.get(), all.get(), FFTW_ESTIMATE));
    fftwf_execute(back.get());
    std::copy_n(all.get(), countB - countA + 1, sums);
}
