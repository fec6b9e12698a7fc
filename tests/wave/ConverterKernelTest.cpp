#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "AudioCodec/wave/converter/ConversionRatio.h"
#include "AudioCodec/wave/converter/KernelChoice.h"
#include "AudioCodec/wave/converter/PhaseFilter.h"
#include "AudioCodec/wave/converter/SampleScale.h"
#include "AudioCodec/wave/converter/SharedFilters.h"
#include "tests/wave/ConverterScript.h"

namespace {

TEST(ConverterKernel, EveryLifeIsThatOfTheDefinition) {
    for (size_t k = 0; const ConverterKernel* kernel = KernelAt(k); ++k) {
        if (!kernel->isOffered()) continue;
        for (uint32_t seed = 0; seed < 300; ++seed) {
            const std::vector<uint8_t> script = RandomScript(seed);
            ASSERT_EQ(ConverterScript(script.data(), script.size()).Play(*kernel), "")
                << kernel->name << ", seed " << seed;
        }
    }
}

// Whole numbers are exact, 128 bits hold each product of a tap and a sample: taps have 53 bits, so in steps
// of 2^-100 all but the least of them are whole, and what isn't counts as one step more.
__extension__ using Wide = __int128;
constexpr int kUnit = 100;
Wide InSteps(double value) {
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent);
    const auto mantissa = static_cast<Wide>(std::ldexp(fraction, 53));
    const int shift = exponent - 53 + kUnit;
    return shift >= 0 ? mantissa << shift : (mantissa >> std::min(-shift, 126)) + 1;
}
Wide Size(Wide value) { return value < 0 ? -value : value; }

// What the whole numbers leave out of a sum is no more than the filter says, and no sum leaves 32 bits.
TEST(ConverterKernel, BoundsHoldWhatTheSplitLeavesOut) {
    constexpr int32_t kRates[] = {8000,  11025, 12000, 16000, 22050, 24000,
                                  32000, 44100, 48000, 96000, 192000};
    for (const int32_t from : kRates) {
        for (const int32_t to : kRates) {
            const PhaseFilter filter(FindConversionRatio(from, to), std::min(1.0, 1.0 * to / from));
            const FilterLayout& layout = filter.Layout();
            ASSERT_NE(layout.blockCount, 0U);
            const int unit = kUnit - FilterLayout::kCoarseBits;  // of the coarse sums, in steps
            for (size_t b = 0; b < layout.blockCount; ++b) {
                const FilterLayout::Block& block = layout.blocks[b];
                for (int32_t lane = 0; lane < block.lanes; ++lane) {
                    Wide left = 0;
                    Wide leftOfExcess = 0;
                    int64_t coarse = 0;
                    int64_t fine = 0;
                    for (size_t slot = 0; slot < 2 * block.pairCount; ++slot) {
                        const auto tap = [&](const FilterLayout::PairTaps* pairs, size_t pair) {
                            return int64_t{pairs[pair].taps[lane][slot % 2]};
                        };
                        const int64_t high = tap(block.pairs, slot / 2 * 2);
                        const int64_t low = tap(block.pairs, slot / 2 * 2 + 1);
                        const int64_t beyond = tap(block.excess, slot / 2);
                        const Wide whole = static_cast<Wide>((high << layout.fineBits) + low)
                                           << (unit - layout.fineBits);
                        const double c = block.slots[slot].taps[lane];
                        left += Size(InSteps(c) - whole);
                        leftOfExcess +=
                            Size(InSteps(c * SampleScale::kExcess) -
                                 (static_cast<Wide>(beyond) << (kUnit - FilterLayout::kExcessBits)));
                        coarse += std::abs(high) * SampleScale::kWholeLimit;
                        fine += std::abs(low) * SampleScale::kWholeLimit;
                        fine += std::abs(beyond)
                                << (FilterLayout::kCoarseBits + layout.fineBits - FilterLayout::kExcessBits);
                    }
                    // Sums with samples at the limit whose signs are those of what each tap leaves out.
                    ASSERT_LE(
                        left * SampleScale::kWholeLimit,
                        InSteps(layout.leftOut * SampleScale::kWholeLimit / (1 << FilterLayout::kCoarseBits)))
                        << from << " to " << to << ", lane " << lane << " of block " << b;
                    ASSERT_LE(leftOfExcess, static_cast<Wide>(4) << unit);
                    ASSERT_LT(fine, int64_t{1} << 31);
                    ASSERT_LT(coarse + (fine >> layout.fineBits) + 1, int64_t{1} << 31);
                }
            }
            // And tight enough that most samples are certain.
            EXPECT_LT(layout.leftOut * SampleScale::kWholeLimit / (1 << FilterLayout::kCoarseBits), 0.01);
        }
    }
}

TEST(ConverterKernel, FiltersOfTheSameRatesAreOne) {
    const ConversionRatio ratio = FindConversionRatio(44100, 48000);
    const auto filter = SharedFilter(ratio, 1.0);
    EXPECT_EQ(SharedFilter(ratio, 1.0), filter);
    EXPECT_NE(SharedFilter(ratio, 0.9), filter);
    for (int i = 0; i < 20; ++i) SharedFilter(ratio, 0.5 + 0.01 * i);
    EXPECT_NE(SharedFilter(ratio, 1.0), filter) << "no bound on how many are kept";
}

TEST(ConverterKernelThreads, ShareFilters) {
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 125; ++i) {
                const int32_t phases = 1 + (i + t) % 12;
                EXPECT_EQ(SharedFilter({phases, 3}, 1.0)->Layout().phases, phases);
            }
        });
    for (std::thread& thread : threads) thread.join();
}

// The name is looked at once in a process, so each case is one.
TEST(ConverterKernel, ANameThatIsntOfferedIsToldOnceAndTheBestIsTaken) {
    const auto choose = [](const char* name) {
        setenv("VLACWAV3_KERNEL", name, 1);
        const ConverterKernel* const chosen = &ChosenKernel();
        std::exit(&ChosenKernel() == chosen && chosen->isOffered() ? 0 : 1);
    };
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(choose("vax"), testing::ExitedWithCode(0),
                "^VLACWAV3_KERNEL=vax isn't offered here; [a-z0-9]+ converts.\n$");
    EXPECT_EXIT(choose("portable"), testing::ExitedWithCode(0), "^$");
}

}  // namespace
