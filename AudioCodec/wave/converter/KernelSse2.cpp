#include <emmintrin.h>

#include "AudioCodec/wave/converter/VectorKernel.h"
#include "AudioCodec/wave/converter/VectorKernels.h"

namespace {

struct Sse2Lanes {
    static constexpr int kStreams = 1;  // 8 of the 16 registers are its sums
    static constexpr int kSlotStreams = 1;
    static constexpr size_t kSplitFrames = 8;
    static constexpr size_t kJoinFrames = 8;

    struct Ints {
        __m128i four[4];
    };
    using Pairs = Ints;
    using Pair = __m128i;
    struct Doubles {
        __m128d two[8];
    };
    struct Range {
        __m128i least, most;
    };

    template <class Each>
    static Ints Make(Each each) {
        return {{each(0), each(1), each(2), each(3)}};
    }
    static Ints Zero() {
        return Make([](size_t) { return _mm_setzero_si128(); });
    }
    static Ints Set(int32_t value) {
        return Make([&](size_t) { return _mm_set1_epi32(value); });
    }
    static Pairs Load(const FilterLayout::PairTaps& taps) {
        return Make([&](size_t i) { return _mm_load_si128(reinterpret_cast<const __m128i*>(&taps) + i); });
    }
    static Pair Broadcast(const int16_t* samples) {
        int32_t pair = 0;
        __builtin_memcpy(&pair, samples, sizeof pair);
        return _mm_set1_epi32(pair);
    }
    static Ints MultiplyAdd(const Ints& sum, Pair samples, const Pairs& taps) {
        return Make(
            [&](size_t i) { return _mm_add_epi32(sum.four[i], _mm_madd_epi16(samples, taps.four[i])); });
    }
    static Ints And(const Ints& a, const Ints& b) {
        return Make([&](size_t i) { return _mm_and_si128(a.four[i], b.four[i]); });
    }
    static Ints Add(const Ints& a, const Ints& b) {
        return Make([&](size_t i) { return _mm_add_epi32(a.four[i], b.four[i]); });
    }
    static Ints Sub(const Ints& a, const Ints& b) {
        return Make([&](size_t i) { return _mm_sub_epi32(a.four[i], b.four[i]); });
    }
    static Ints ShiftLeft(const Ints& a, int bits) {
        return Make([&](size_t i) { return _mm_sll_epi32(a.four[i], _mm_cvtsi32_si128(bits)); });
    }
    static Ints ShiftRight(const Ints& a, int bits) {
        return Make([&](size_t i) { return _mm_sra_epi32(a.four[i], _mm_cvtsi32_si128(bits)); });
    }
    static Ints Whole(const Ints& a) {
        return Make([&](size_t i) { return _mm_srai_epi32(a.four[i], FilterLayout::kCoarseBits); });
    }
    static Ints SignBit(const Ints& a) {
        return Make([&](size_t i) { return _mm_srli_epi32(a.four[i], 31); });
    }
    static uint32_t Above(const Ints& a, const Ints& b) {
        uint32_t above = 0;
        for (size_t i = 0; i < 4; ++i) {
            const __m128 mask = _mm_castsi128_ps(_mm_cmpgt_epi32(a.four[i], b.four[i]));
            above |= static_cast<uint32_t>(_mm_movemask_ps(mask)) << (4 * i);
        }
        return above;
    }
    static void Store(int16_t* output, const Ints& samples) {
        auto* const to = reinterpret_cast<__m128i*>(output);
        const __m128i least = _mm_set1_epi16(-SampleScale::kOutputLimit);
        for (size_t i = 0; i < 2; ++i)
            _mm_storeu_si128(
                to + i, _mm_max_epi16(_mm_packs_epi32(samples.four[2 * i], samples.four[2 * i + 1]), least));
    }

    static Doubles ZeroDoubles() {
        Doubles sum{};
        for (__m128d& two : sum.two) two = _mm_setzero_pd();
        return sum;
    }
    static void MultiplyAddSlot(Doubles& sum, double value, const FilterLayout::SlotTaps& taps) {
        const __m128d all = _mm_set1_pd(value);
        for (size_t i = 0; i < 8; ++i)
            sum.two[i] = _mm_add_pd(sum.two[i], _mm_mul_pd(all, _mm_load_pd(taps.taps + 2 * i)));
    }
    static Ints ToSteps(const Doubles& sum) {
        const __m128d scale = _mm_set1_pd(SampleScale::kFull);
        return Make([&](size_t i) {
            return _mm_unpacklo_epi64(_mm_cvttpd_epi32(_mm_mul_pd(sum.two[2 * i], scale)),
                                      _mm_cvttpd_epi32(_mm_mul_pd(sum.two[2 * i + 1], scale)));
        });
    }
    static void StoreDoubles(double* lanes, const Doubles& sum) {
        for (size_t i = 0; i < 8; ++i) _mm_store_pd(lanes + 2 * i, sum.two[i]);
    }
    static Doubles LoadDoubles(const double* values, double divisor) {
        Doubles sum{};
        for (size_t i = 0; i < 8; ++i)
            sum.two[i] = _mm_div_pd(_mm_loadu_pd(values + 2 * i), _mm_set1_pd(divisor));
        return sum;
    }
    static __m128d TwoDoubles(const int16_t* samples) {
        int32_t pair = 0;
        __builtin_memcpy(&pair, samples, sizeof pair);
        const __m128i words = _mm_cvtsi32_si128(pair);
        return _mm_cvtepi32_pd(_mm_srai_epi32(_mm_unpacklo_epi16(words, words), 16));
    }
    static __m128d Held(__m128d values, double limit) {
        return _mm_max_pd(_mm_min_pd(values, _mm_set1_pd(limit)), _mm_set1_pd(-limit));
    }
    static void Widen(const int16_t* samples, double* values, size_t count) {
        const __m128d scale = _mm_set1_pd(SampleScale::kFull);
        for (size_t i = 0; i < count; i += 2)
            _mm_storeu_pd(values + i,
                          Held(_mm_div_pd(TwoDoubles(samples + i), scale), SampleScale::kInputLimit));
    }
    static double AnyOrder(const int16_t* window, const double* row) {
        __m128d sum = _mm_setzero_pd();
        for (size_t k = 0; k < kTapsPerRow; k += 2) {
            const __m128d held =
                Held(TwoDoubles(window + k), SampleScale::kWholeLimit + SampleScale::kExcess);
            sum = _mm_add_pd(sum, _mm_mul_pd(held, _mm_loadu_pd(row + k)));
        }
        return _mm_cvtsd_f64(_mm_add_sd(sum, _mm_unpackhi_pd(sum, sum)));
    }

    // Also looks at what follows, up to a whole vector.
    static bool AnySet(const int16_t* words, size_t count) {
        __m128i all = _mm_setzero_si128();
        for (size_t i = 0; i < count; i += 8)
            all = _mm_or_si128(all, _mm_loadu_si128(reinterpret_cast<const __m128i*>(words + i)));
        return _mm_movemask_epi8(_mm_cmpeq_epi8(all, _mm_setzero_si128())) != 0xFFFF;
    }

    static Range NoRange() { return {_mm_setzero_si128(), _mm_setzero_si128()}; }
    static void Include(Range& range, __m128i words) {
        range.least = _mm_min_epi16(range.least, words);
        range.most = _mm_max_epi16(range.most, words);
    }
    static void StoreSizes(const Range& range, uint16_t* sizes) {
        // 0 - -32768 is -32768, whose bits are 32768. Both sizes are 0 or more as 16 bits without a sign: the
        // larger one is the second and what the first has beyond it.
        const __m128i below = _mm_sub_epi16(_mm_setzero_si128(), range.least);
        _mm_store_si128(reinterpret_cast<__m128i*>(sizes),
                        _mm_add_epi16(range.most, _mm_subs_epu16(below, range.most)));
    }
    static void SplitStereo(const int16_t* input, int16_t* left, int16_t* right, Range& range) {
        const auto* const from = reinterpret_cast<const __m128i*>(input);
        const __m128i first = _mm_loadu_si128(from);
        const __m128i second = _mm_loadu_si128(from + 1);
        Include(range, first);
        Include(range, second);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(left),
                         _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(first, 16), 16),
                                         _mm_srai_epi32(_mm_slli_epi32(second, 16), 16)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(right),
                         _mm_packs_epi32(_mm_srai_epi32(first, 16), _mm_srai_epi32(second, 16)));
    }
    static void CopyInRange(const int16_t* input, int16_t* row, Range& range) {
        const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(input));
        Include(range, words);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(row), words);
    }
    static void JoinStereo(const int16_t* left, const int16_t* right, int16_t* output) {
        const __m128i l = _mm_loadu_si128(reinterpret_cast<const __m128i*>(left));
        const __m128i r = _mm_loadu_si128(reinterpret_cast<const __m128i*>(right));
        auto* const to = reinterpret_cast<__m128i*>(output);
        _mm_storeu_si128(to, _mm_unpacklo_epi16(l, r));
        _mm_storeu_si128(to + 1, _mm_unpackhi_epi16(l, r));
    }
};

bool IsOffered() { return true; }  // every x86-64 processor has it

using Kernel = VectorKernel<Sse2Lanes>;

}  // namespace

const ConverterKernel kSse2Kernel = {"sse2", IsOffered, Kernel::Produce, Kernel::Split, Kernel::Join};
