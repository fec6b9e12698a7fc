#include <immintrin.h>

#include "AudioCodec/wave/converter/VectorKernel.h"
#include "AudioCodec/wave/converter/VectorKernels.h"

namespace {

struct Avx2Lanes {
    static constexpr int kStreams = 2;
    static constexpr int kSlotStreams = 2;
    static constexpr size_t kSplitFrames = 16;
    static constexpr size_t kJoinFrames = 16;

    struct Ints {
        __m256i low, high;
    };
    using Pairs = Ints;
    using Pair = __m256i;
    struct Doubles {
        __m256d four[4];
    };
    struct Range {
        __m256i least, most;
    };

    static Ints Zero() { return {_mm256_setzero_si256(), _mm256_setzero_si256()}; }
    static Ints Set(int32_t value) { return {_mm256_set1_epi32(value), _mm256_set1_epi32(value)}; }
    static Pairs Load(const FilterLayout::PairTaps& taps) {
        const auto* const from = reinterpret_cast<const __m256i*>(&taps);
        return {_mm256_load_si256(from), _mm256_load_si256(from + 1)};
    }
    static Pair Broadcast(const int16_t* samples) {
        int32_t pair = 0;
        __builtin_memcpy(&pair, samples, sizeof pair);
        return _mm256_set1_epi32(pair);
    }
    static Ints MultiplyAdd(const Ints& sum, Pair samples, const Pairs& taps) {
        return {_mm256_add_epi32(sum.low, _mm256_madd_epi16(samples, taps.low)),
                _mm256_add_epi32(sum.high, _mm256_madd_epi16(samples, taps.high))};
    }
    static Ints And(const Ints& a, const Ints& b) {
        return {_mm256_and_si256(a.low, b.low), _mm256_and_si256(a.high, b.high)};
    }
    static Ints Add(const Ints& a, const Ints& b) {
        return {_mm256_add_epi32(a.low, b.low), _mm256_add_epi32(a.high, b.high)};
    }
    static Ints Sub(const Ints& a, const Ints& b) {
        return {_mm256_sub_epi32(a.low, b.low), _mm256_sub_epi32(a.high, b.high)};
    }
    static Ints ShiftLeft(const Ints& a, int bits) {
        const __m128i by = _mm_cvtsi32_si128(bits);
        return {_mm256_sll_epi32(a.low, by), _mm256_sll_epi32(a.high, by)};
    }
    static Ints ShiftRight(const Ints& a, int bits) {
        const __m128i by = _mm_cvtsi32_si128(bits);
        return {_mm256_sra_epi32(a.low, by), _mm256_sra_epi32(a.high, by)};
    }
    static Ints Whole(const Ints& a) {
        return {_mm256_srai_epi32(a.low, FilterLayout::kCoarseBits),
                _mm256_srai_epi32(a.high, FilterLayout::kCoarseBits)};
    }
    static Ints SignBit(const Ints& a) {
        return {_mm256_srli_epi32(a.low, 31), _mm256_srli_epi32(a.high, 31)};
    }
    static uint32_t Above(const Ints& a, const Ints& b) {
        const auto mask = [](__m256i x, __m256i y) {
            const __m256i above = _mm256_cmpgt_epi32(x, y);
            return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(above)));
        };
        return mask(a.low, b.low) | mask(a.high, b.high) << 8;
    }
    static void Store(int16_t* output, const Ints& samples) {
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packs_epi32(samples.low, samples.high), 0xD8);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(output),
                            _mm256_max_epi16(packed, _mm256_set1_epi16(-SampleScale::kOutputLimit)));
    }

    static Doubles ZeroDoubles() {
        const __m256d zero = _mm256_setzero_pd();
        return {{zero, zero, zero, zero}};
    }
    static void MultiplyAddSlot(Doubles& sum, double value, const FilterLayout::SlotTaps& taps) {
        const __m256d all = _mm256_set1_pd(value);
        for (size_t i = 0; i < 4; ++i)
            sum.four[i] = _mm256_add_pd(sum.four[i], _mm256_mul_pd(all, _mm256_load_pd(taps.taps + 4 * i)));
    }
    static Ints ToSteps(const Doubles& sum) {
        const auto steps = [](__m256d low, __m256d high) {
            const __m256d scale = _mm256_set1_pd(SampleScale::kFull);
            return _mm256_set_m128i(_mm256_cvttpd_epi32(_mm256_mul_pd(high, scale)),
                                    _mm256_cvttpd_epi32(_mm256_mul_pd(low, scale)));
        };
        return {steps(sum.four[0], sum.four[1]), steps(sum.four[2], sum.four[3])};
    }
    static void StoreDoubles(double* lanes, const Doubles& sum) {
        for (size_t i = 0; i < 4; ++i) _mm256_store_pd(lanes + 4 * i, sum.four[i]);
    }
    static Doubles LoadDoubles(const double* values, double divisor) {
        Doubles sum{};
        for (size_t i = 0; i < 4; ++i)
            sum.four[i] = _mm256_div_pd(_mm256_loadu_pd(values + 4 * i), _mm256_set1_pd(divisor));
        return sum;
    }
    static __m256d FourDoubles(const int16_t* samples) {
        return _mm256_cvtepi32_pd(
            _mm_cvtepi16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(samples))));
    }
    static __m256d Held(__m256d values, double limit) {
        return _mm256_max_pd(_mm256_min_pd(values, _mm256_set1_pd(limit)), _mm256_set1_pd(-limit));
    }
    static void Widen(const int16_t* samples, double* values, size_t count) {
        const __m256d scale = _mm256_set1_pd(SampleScale::kFull);
        for (size_t i = 0; i < count; i += 4)
            _mm256_storeu_pd(values + i,
                             Held(_mm256_div_pd(FourDoubles(samples + i), scale), SampleScale::kInputLimit));
    }
    static double AnyOrder(const int16_t* window, const double* row) {
        __m256d sum = _mm256_setzero_pd();
        for (size_t k = 0; k < kTapsPerRow; k += 4) {
            const __m256d held =
                Held(FourDoubles(window + k), SampleScale::kWholeLimit + SampleScale::kExcess);
            sum = _mm256_add_pd(sum, _mm256_mul_pd(held, _mm256_loadu_pd(row + k)));
        }
        const __m128d half = _mm_add_pd(_mm256_castpd256_pd128(sum), _mm256_extractf128_pd(sum, 1));
        return _mm_cvtsd_f64(_mm_add_sd(half, _mm_unpackhi_pd(half, half)));
    }

    // Also looks at what follows, up to a whole vector.
    static bool AnySet(const int16_t* words, size_t count) {
        __m256i all = _mm256_setzero_si256();
        for (size_t i = 0; i < count; i += 16)
            all = _mm256_or_si256(all, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words + i)));
        return _mm256_testz_si256(all, all) == 0;
    }

    static Range NoRange() { return {_mm256_setzero_si256(), _mm256_setzero_si256()}; }
    static void Include(Range& range, __m256i words) {
        range.least = _mm256_min_epi16(range.least, words);
        range.most = _mm256_max_epi16(range.most, words);
    }
    // -32768 has the size 32768.
    static void StoreSizes(const Range& range, uint16_t* sizes) {
        _mm256_store_si256(reinterpret_cast<__m256i*>(sizes),
                           _mm256_max_epu16(_mm256_abs_epi16(range.least), _mm256_abs_epi16(range.most)));
    }
    static void SplitStereo(const int16_t* input, int16_t* left, int16_t* right, Range& range) {
        const auto* const from = reinterpret_cast<const __m256i*>(input);
        const __m256i first = _mm256_loadu_si256(from);
        const __m256i second = _mm256_loadu_si256(from + 1);
        Include(range, first);
        Include(range, second);
        // Left samples to the lower half of each 32 bits with their sign, right ones likewise; then packed.
        const auto store = [](int16_t* output, __m256i low, __m256i high) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(output),
                                _mm256_permute4x64_epi64(_mm256_packs_epi32(low, high), 0xD8));
        };
        store(left, _mm256_srai_epi32(_mm256_slli_epi32(first, 16), 16),
              _mm256_srai_epi32(_mm256_slli_epi32(second, 16), 16));
        store(right, _mm256_srai_epi32(first, 16), _mm256_srai_epi32(second, 16));
    }
    static void CopyInRange(const int16_t* input, int16_t* row, Range& range) {
        const __m256i words = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(input));
        Include(range, words);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row), words);
    }
    static void JoinStereo(const int16_t* left, const int16_t* right, int16_t* output) {
        // Quarters 0 2 1 3, so that unpacking, which stays in halves, brings them back into order.
        const auto load = [](const int16_t* samples) {
            return _mm256_permute4x64_epi64(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples)),
                                            0xD8);
        };
        const __m256i l = load(left);
        const __m256i r = load(right);
        auto* const to = reinterpret_cast<__m256i*>(output);
        _mm256_storeu_si256(to, _mm256_unpacklo_epi16(l, r));
        _mm256_storeu_si256(to + 1, _mm256_unpackhi_epi16(l, r));
    }
};

bool IsOffered() { return __builtin_cpu_supports("avx2"); }

using Kernel = VectorKernel<Avx2Lanes>;

}  // namespace

const ConverterKernel kAvx2Kernel = {"avx2", IsOffered, Kernel::Produce, Kernel::Split, Kernel::Join};
