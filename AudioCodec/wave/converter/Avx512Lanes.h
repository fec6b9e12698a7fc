// 16 lanes of AVX-512 (F, BW, VL, DQ), for the two kernels that differ in how they multiply.
#pragma once

#include <immintrin.h>

#include "AudioCodec/wave/converter/FilterLayout.h"
#include "AudioCodec/wave/converter/SampleScale.h"

namespace {

struct Avx512Lanes {
    static constexpr int kStreams = 4;
    static constexpr int kSlotStreams = 4;
    static constexpr size_t kSplitFrames = 32;
    static constexpr size_t kJoinFrames = 16;

    using Ints = __m512i;
    using Pairs = __m512i;
    using Pair = __m512i;
    struct Doubles {
        __m512d low, high;
    };
    struct Range {
        __m512i least, most;
    };

    static Ints Zero() { return _mm512_setzero_si512(); }
    static Ints Set(int32_t value) { return _mm512_set1_epi32(value); }
    static Pairs Load(const FilterLayout::PairTaps& taps) { return _mm512_load_si512(&taps); }
    static Pair Broadcast(const int16_t* samples) {
        int32_t pair = 0;
        __builtin_memcpy(&pair, samples, sizeof pair);
        return _mm512_set1_epi32(pair);
    }
    static Ints MultiplyAdd(Ints sum, Pair samples, Pairs taps) {
        return _mm512_add_epi32(sum, _mm512_madd_epi16(samples, taps));
    }
    static Ints And(Ints a, Ints b) { return _mm512_and_si512(a, b); }
    static Ints Add(Ints a, Ints b) { return _mm512_add_epi32(a, b); }
    static Ints Sub(Ints a, Ints b) { return _mm512_sub_epi32(a, b); }
    static Ints ShiftLeft(Ints a, int bits) { return _mm512_sll_epi32(a, _mm_cvtsi32_si128(bits)); }
    static Ints ShiftRight(Ints a, int bits) { return _mm512_sra_epi32(a, _mm_cvtsi32_si128(bits)); }
    static Ints Whole(Ints a) { return _mm512_srai_epi32(a, FilterLayout::kCoarseBits); }
    static Ints SignBit(Ints a) { return _mm512_srli_epi32(a, 31); }
    static uint32_t Above(Ints a, Ints b) { return _mm512_cmpgt_epi32_mask(a, b); }
    static void Store(int16_t* output, Ints samples) {
        const __m256i cut =
            _mm256_max_epi16(_mm512_cvtsepi32_epi16(samples), _mm256_set1_epi16(-SampleScale::kOutputLimit));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(output), cut);
    }

    static Doubles ZeroDoubles() { return {_mm512_setzero_pd(), _mm512_setzero_pd()}; }
    static void MultiplyAddSlot(Doubles& sum, double value, const FilterLayout::SlotTaps& taps) {
        const __m512d all = _mm512_set1_pd(value);
        sum.low = _mm512_add_pd(sum.low, _mm512_mul_pd(all, _mm512_load_pd(taps.taps)));
        sum.high = _mm512_add_pd(sum.high, _mm512_mul_pd(all, _mm512_load_pd(taps.taps + 8)));
    }
    static Ints ToSteps(const Doubles& sum) {
        const __m512d scale = _mm512_set1_pd(SampleScale::kFull);
        const __m256i low = _mm512_cvttpd_epi32(_mm512_mul_pd(sum.low, scale));
        const __m256i high = _mm512_cvttpd_epi32(_mm512_mul_pd(sum.high, scale));
        return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
    }
    static void StoreDoubles(double* lanes, const Doubles& sum) {
        _mm512_store_pd(lanes, sum.low);
        _mm512_store_pd(lanes + 8, sum.high);
    }
    static Doubles LoadDoubles(const double* values, double divisor) {
        const __m512d by = _mm512_set1_pd(divisor);
        return {_mm512_div_pd(_mm512_loadu_pd(values), by), _mm512_div_pd(_mm512_loadu_pd(values + 8), by)};
    }
    // 16 samples, or more of which the last are of no account.
    static void Widen(const int16_t* samples, double* values, size_t count) {
        const __m512d limit = _mm512_set1_pd(SampleScale::kInputLimit);
        const __m512d least = _mm512_set1_pd(-SampleScale::kInputLimit);
        const __m512d scale = _mm512_set1_pd(SampleScale::kFull);
        for (size_t i = 0; i < count; i += 8) {
            const __m512d wide = EightDoubles(samples + i);
            _mm512_storeu_pd(values + i,
                             _mm512_max_pd(_mm512_min_pd(_mm512_div_pd(wide, scale), limit), least));
        }
    }
    static __m512d EightDoubles(const int16_t* samples) {
        return _mm512_cvtepi32_pd(
            _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(samples))));
    }
    static double AnyOrder(const int16_t* window, const double* row) {
        const __m512d limit = _mm512_set1_pd(SampleScale::kWholeLimit + SampleScale::kExcess);
        const __m512d least = _mm512_set1_pd(-(SampleScale::kWholeLimit + SampleScale::kExcess));
        __m512d sum = _mm512_setzero_pd();
        for (size_t k = 0; k < kTapsPerRow; k += 8) {
            const __m512d held = _mm512_max_pd(_mm512_min_pd(EightDoubles(window + k), limit), least);
            sum = _mm512_fmadd_pd(held, _mm512_loadu_pd(row + k), sum);
        }
        return _mm512_reduce_add_pd(sum);
    }

    // Also looks at what follows, up to a whole vector.
    static bool AnySet(const int16_t* words, size_t count) {
        __m512i all = _mm512_setzero_si512();
        for (size_t i = 0; i < count; i += 32) all = _mm512_or_si512(all, _mm512_loadu_si512(words + i));
        return _mm512_test_epi32_mask(all, all) != 0;
    }

    static Range NoRange() { return {_mm512_setzero_si512(), _mm512_setzero_si512()}; }
    static void Include(Range& range, __m512i words) {
        range.least = _mm512_min_epi16(range.least, words);
        range.most = _mm512_max_epi16(range.most, words);
    }
    // -32768 has the size 32768.
    static void StoreSizes(const Range& range, uint16_t* sizes) {
        _mm512_store_si512(sizes,
                           _mm512_max_epu16(_mm512_abs_epi16(range.least), _mm512_abs_epi16(range.most)));
    }
    static void SplitStereo(const int16_t* input, int16_t* left, int16_t* right, Range& range) {
        const __m512i first = _mm512_loadu_si512(input);
        const __m512i second = _mm512_loadu_si512(input + 32);
        Include(range, first);
        Include(range, second);
        const auto store = [](int16_t* output, __m512i low, __m512i high) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(output), _mm512_cvtepi32_epi16(low));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(output + 16), _mm512_cvtepi32_epi16(high));
        };
        store(left, first, second);
        store(right, _mm512_srli_epi32(first, 16), _mm512_srli_epi32(second, 16));
    }
    static void CopyInRange(const int16_t* input, int16_t* row, Range& range) {
        const __m512i words = _mm512_loadu_si512(input);
        Include(range, words);
        _mm512_storeu_si512(row, words);
    }
    static void JoinStereo(const int16_t* left, const int16_t* right, int16_t* output) {
        const __m512i low = _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(left)));
        const __m512i high =
            _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(right)));
        _mm512_storeu_si512(output, _mm512_or_si512(low, _mm512_slli_epi32(high, 16)));
    }
};

}  // namespace
