#include <arm_neon.h>

#include "AudioCodec/wave/converter/VectorKernel.h"
#include "AudioCodec/wave/converter/VectorKernels.h"

namespace {

struct NeonLanes {
    static constexpr int kStreams = 2;  // 16 of the 32 registers are their sums
    static constexpr int kSlotStreams = 2;
    static constexpr size_t kSplitFrames = 8;
    static constexpr size_t kJoinFrames = 8;

    struct Ints {
        int32x4_t four[4];
    };
    // The earlier and the later tap of each lane.
    struct Pairs {
        int16x8x2_t halves[2];
    };
    using Pair = int16x4_t;  // the earlier and the later sample in lanes 0 and 1
    struct Doubles {
        float64x2_t two[8];
    };
    struct Range {
        int16x8_t least, most;
    };

    template <class Each>
    static Ints Make(Each each) {
        return {{each(0), each(1), each(2), each(3)}};
    }
    static Ints Zero() { return Set(0); }
    static Ints Set(int32_t value) {
        return Make([&](size_t) { return vdupq_n_s32(value); });
    }
    static Pairs Load(const FilterLayout::PairTaps& taps) {
        return {{vld2q_s16(taps.taps[0]), vld2q_s16(taps.taps[8])}};
    }
    static Pair Broadcast(const int16_t* samples) {
        int32_t pair = 0;
        __builtin_memcpy(&pair, samples, sizeof pair);
        return vreinterpret_s16_s32(vdup_n_s32(pair));
    }
    static Ints MultiplyAdd(const Ints& sum, Pair samples, const Pairs& taps) {
        const auto low = [&](int32x4_t four, const int16x8x2_t& eight) {
            const int32x4_t earlier = vmlal_lane_s16(four, vget_low_s16(eight.val[0]), samples, 0);
            return vmlal_lane_s16(earlier, vget_low_s16(eight.val[1]), samples, 1);
        };
        const auto high = [&](int32x4_t four, const int16x8x2_t& eight) {
            const int32x4_t earlier = vmlal_high_lane_s16(four, eight.val[0], samples, 0);
            return vmlal_high_lane_s16(earlier, eight.val[1], samples, 1);
        };
        return {{low(sum.four[0], taps.halves[0]), high(sum.four[1], taps.halves[0]),
                 low(sum.four[2], taps.halves[1]), high(sum.four[3], taps.halves[1])}};
    }
    static Ints And(const Ints& a, const Ints& b) {
        return Make([&](size_t i) { return vandq_s32(a.four[i], b.four[i]); });
    }
    static Ints Add(const Ints& a, const Ints& b) {
        return Make([&](size_t i) { return vaddq_s32(a.four[i], b.four[i]); });
    }
    static Ints Sub(const Ints& a, const Ints& b) {
        return Make([&](size_t i) { return vsubq_s32(a.four[i], b.four[i]); });
    }
    static Ints ShiftLeft(const Ints& a, int bits) {
        return Make([&](size_t i) { return vshlq_s32(a.four[i], vdupq_n_s32(bits)); });
    }
    static Ints ShiftRight(const Ints& a, int bits) {
        return Make([&](size_t i) { return vshlq_s32(a.four[i], vdupq_n_s32(-bits)); });
    }
    static Ints Whole(const Ints& a) {
        return Make([&](size_t i) { return vshrq_n_s32(a.four[i], FilterLayout::kCoarseBits); });
    }
    static Ints SignBit(const Ints& a) {
        return Make([&](size_t i) {
            return vreinterpretq_s32_u32(vshrq_n_u32(vreinterpretq_u32_s32(a.four[i]), 31));
        });
    }
    static uint32_t Above(const Ints& a, const Ints& b) {
        alignas(16) static constexpr uint32_t kBits[4] = {1, 2, 4, 8};
        const uint32x4_t bits = vld1q_u32(kBits);
        uint32_t above = 0;
        for (size_t i = 0; i < 4; ++i)
            above |= vaddvq_u32(vandq_u32(vcgtq_s32(a.four[i], b.four[i]), bits)) << (4 * i);
        return above;
    }
    static void Store(int16_t* output, const Ints& samples) {
        const int16x8_t least = vdupq_n_s16(-SampleScale::kOutputLimit);
        for (size_t i = 0; i < 2; ++i) {
            const int16x8_t packed =
                vcombine_s16(vqmovn_s32(samples.four[2 * i]), vqmovn_s32(samples.four[2 * i + 1]));
            vst1q_s16(output + 8 * i, vmaxq_s16(packed, least));
        }
    }

    static Doubles ZeroDoubles() {
        Doubles sum{};
        for (float64x2_t& two : sum.two) two = vdupq_n_f64(0.0);
        return sum;
    }
    static void MultiplyAddSlot(Doubles& sum, double value, const FilterLayout::SlotTaps& taps) {
        // Two roundings, as the definition has them: no fused multiply-add.
        const float64x2_t all = vdupq_n_f64(value);
        for (size_t i = 0; i < 8; ++i)
            sum.two[i] = vaddq_f64(sum.two[i], vmulq_f64(all, vld1q_f64(taps.taps + 2 * i)));
    }
    static Ints ToSteps(const Doubles& sum) {
        const auto steps = [](float64x2_t two) {
            return vqmovn_s64(vcvtq_s64_f64(vmulq_f64(two, vdupq_n_f64(SampleScale::kFull))));
        };
        return Make([&](size_t i) { return vcombine_s32(steps(sum.two[2 * i]), steps(sum.two[2 * i + 1])); });
    }
    static void StoreDoubles(double* lanes, const Doubles& sum) {
        for (size_t i = 0; i < 8; ++i) vst1q_f64(lanes + 2 * i, sum.two[i]);
    }
    static Doubles LoadDoubles(const double* values, double divisor) {
        Doubles sum{};
        for (size_t i = 0; i < 8; ++i)
            sum.two[i] = vdivq_f64(vld1q_f64(values + 2 * i), vdupq_n_f64(divisor));
        return sum;
    }
    static float64x2_t TwoDoubles(const int16_t* samples) {
        return vcvtq_f64_s64(vmovl_s32(vget_low_s32(vmovl_s16(Broadcast(samples)))));
    }
    static float64x2_t Held(float64x2_t values, double limit) {
        return vmaxq_f64(vminq_f64(values, vdupq_n_f64(limit)), vdupq_n_f64(-limit));
    }
    static void Widen(const int16_t* samples, double* values, size_t count) {
        for (size_t i = 0; i < count; i += 2) {
            const float64x2_t scaled = vdivq_f64(TwoDoubles(samples + i), vdupq_n_f64(SampleScale::kFull));
            vst1q_f64(values + i, Held(scaled, SampleScale::kInputLimit));
        }
    }
    static double AnyOrder(const int16_t* window, const double* row) {
        float64x2_t sum = vdupq_n_f64(0.0);
        for (size_t k = 0; k < kTapsPerRow; k += 2) {
            const float64x2_t held =
                Held(TwoDoubles(window + k), SampleScale::kWholeLimit + SampleScale::kExcess);
            sum = vfmaq_f64(sum, held, vld1q_f64(row + k));
        }
        return vaddvq_f64(sum);
    }

    // Also looks at what follows, up to a whole vector.
    static bool AnySet(const int16_t* words, size_t count) {
        int16x8_t all = vdupq_n_s16(0);
        for (size_t i = 0; i < count; i += 8) all = vorrq_s16(all, vld1q_s16(words + i));
        return vmaxvq_u16(vreinterpretq_u16_s16(all)) != 0;
    }

    static Range NoRange() { return {vdupq_n_s16(0), vdupq_n_s16(0)}; }
    static void Include(Range& range, int16x8_t words) {
        range.least = vminq_s16(range.least, words);
        range.most = vmaxq_s16(range.most, words);
    }
    // -32768 has the size 32768.
    static void StoreSizes(const Range& range, uint16_t* sizes) {
        const uint16x8_t below = vreinterpretq_u16_s16(vnegq_s16(range.least));
        vst1q_u16(sizes, vmaxq_u16(below, vreinterpretq_u16_s16(range.most)));
    }
    static void SplitStereo(const int16_t* input, int16_t* left, int16_t* right, Range& range) {
        const int16x8x2_t frames = vld2q_s16(input);
        Include(range, frames.val[0]);
        Include(range, frames.val[1]);
        vst1q_s16(left, frames.val[0]);
        vst1q_s16(right, frames.val[1]);
    }
    static void CopyInRange(const int16_t* input, int16_t* row, Range& range) {
        const int16x8_t words = vld1q_s16(input);
        Include(range, words);
        vst1q_s16(row, words);
    }
    static void JoinStereo(const int16_t* left, const int16_t* right, int16_t* output) {
        vst2q_s16(output, (int16x8x2_t{{vld1q_s16(left), vld1q_s16(right)}}));
    }
};

bool IsOffered() { return true; }  // every processor of this architecture has it

using Kernel = VectorKernel<NeonLanes>;

}  // namespace

const ConverterKernel kNeonKernel = {"neon", IsOffered, Kernel::Produce, Kernel::Split, Kernel::Join};
