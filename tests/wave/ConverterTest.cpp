#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "AudioCodec/wave/CSampleRateConverter.h"

namespace {

using Samples = std::vector<int16_t>;

Samples Noise(size_t count, int16_t amplitude = 32767) {
    std::mt19937 random(count);
    std::uniform_int_distribution<int> level(-amplitude, amplitude);
    Samples samples(count);
    for (int16_t& sample : samples) sample = static_cast<int16_t>(level(random));
    return samples;
}

// Feeds all frames in offers of `offer`, with `room` for each call, and then the tail.
Samples Convert(CSampleRateConverter& converter, const Samples& input, uint32_t channels,
                uint32_t outChannels, uint32_t offer, uint32_t room) {
    Samples output;
    Samples block(size_t{room} * outChannels);
    size_t at = 0;
    for (int idle = 0; idle < 3;) {
        auto taken = static_cast<uint32_t>(std::min<size_t>(offer, input.size() / channels - at));
        uint32_t made = room;
        converter.Process(input.data() + at * channels, &taken, block.data(), &made);
        output.insert(output.end(), block.begin(), block.begin() + std::ptrdiff_t{made} * outChannels);
        at = std::min(at + taken, input.size() / channels);
        idle = made == 0 ? idle + 1 : 0;
    }
    return output;
}

// The definition written down frame by frame, without history, batches or warm-up: output frame n meets the
// input around floor(n M / L) with a filter of its own.
int16_t DirectSample(const Samples& mono, int64_t n, int64_t phases, int64_t step, double cutoff) {
    constexpr double kPi = 3.141592653589793;
    double row[32] = {};
    double sum = 0;
    const int64_t phase = n % phases;
    for (int j = 1; j < 32; ++j) {
        const int64_t meets = phase * step / phases + j - 16;
        const double t = static_cast<double>(meets * phases - phase * step) / static_cast<double>(phases);
        const double a = std::fabs(t * cutoff);
        const double sinc = a == 0 ? 1 : std::sin(std::fmod(a, 2.0) * kPi) / (a * kPi);
        const double hann = std::fabs(t / 16) >= 1 ? 0 : std::pow(std::cos(t / 16 * 0.5 * kPi), 2);
        sum += row[j] = hann * sinc;
    }
    double value = 0;
    for (int j = 0; j < 32; ++j) {
        const int64_t frame = n * step / phases + j - 16;
        const bool inside = frame >= 0 && frame < static_cast<int64_t>(mono.size());
        const double x = inside ? std::clamp(mono[static_cast<size_t>(frame)] / 32767.0, -0.999, 0.999) : 0;
        value += x * (row[j] / sum);
    }
    return static_cast<int16_t>(std::clamp(static_cast<int>(value * 32767.0), -32767, 32767));
}

struct RatePair {
    int32_t source, output, phases, step;
};
class ConverterRates : public testing::TestWithParam<RatePair> {};

TEST_P(ConverterRates, RatioIsTheDocumentedOne) {
    const auto ratio = CSampleRateConverter::FindRatio(GetParam().source, GetParam().output);
    EXPECT_EQ(ratio.phaseCount, GetParam().phases);
    EXPECT_EQ(ratio.inputStep, GetParam().step);
}

TEST_P(ConverterRates, AnyDivisionIntoBlocksEqualsTheDirectSum) {
    const auto [source, outputRate, phases, step] = GetParam();
    const Samples input = Noise(3000);
    CSampleRateConverter converter;
    for (const auto& [offer, room] : {std::pair{4096u, 100000u}, {64u, 7u}, {2048u, 1u}}) {
        converter.Configure(1, source, 1, outputRate);
        ASSERT_EQ(converter.ResetToOutputPosition(0), 0);
        const Samples output = Convert(converter, input, 1, 1, offer, room);
        ASSERT_NEAR(static_cast<double>(output.size()), 3000.0 * phases / step, 1.0 + 1.0 * phases / step);
        for (size_t n = 0; n < output.size(); ++n)
            ASSERT_EQ(output[n], DirectSample(input, static_cast<int64_t>(n), phases, step,
                                              std::min(1.0, 1.0 * outputRate / source)))
                << "frame " << n << " of " << source << " to " << outputRate << " in offers of " << offer;
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, ConverterRates,
                         testing::Values(RatePair{44100, 48000, 160, 147}, RatePair{48000, 44100, 147, 160},
                                         RatePair{44100, 22050, 1, 2}, RatePair{22050, 44100, 2, 1},
                                         RatePair{44100, 8000, 80, 441}, RatePair{8000, 44100, 441, 80},
                                         RatePair{32000, 44100, 441, 320}, RatePair{44100, 47999, 911, 837},
                                         RatePair{192000, 8000, 1, 24}));

TEST(Converter, ReadBehindASeekEqualsTheStraightRead) {
    const Samples input = Noise(4000);
    CSampleRateConverter converter;
    converter.Configure(1, 44100, 1, 48000);
    converter.ResetToOutputPosition(0);
    const Samples straight = Convert(converter, input, 1, 1, 4096, 4096);
    for (const int64_t position : {1, 10, 17, 18, 159, 160, 161, 2000, 4000}) {
        const int64_t from = converter.ResetToOutputPosition(position);
        const Samples rest(input.begin() + from, input.end());
        const Samples sought = Convert(converter, rest, 1, 1, 4096, 4096);
        ASSERT_EQ(sought, Samples(straight.begin() + position, straight.end())) << position;
    }
}

TEST(Converter, ResetsGiveTheFramesToGoOnFrom) {
    CSampleRateConverter converter;
    EXPECT_EQ(converter.ResetToOutputPosition(5), 0);  // not configured yet
    converter.Configure(2, 44100, 2, 44100);
    EXPECT_EQ(converter.ResetToOutputPosition(10), 0);
    EXPECT_EQ(converter.ResetToOutputPosition(1000), 984);
    EXPECT_EQ(converter.ResetToOutputPosition(-5), 0);
    converter.Configure(2, 44100, 2, 48000);
    EXPECT_EQ(converter.ResetToInputPosition(0), 1);
    EXPECT_EQ(converter.ResetToInputPosition(147), 161);
    EXPECT_EQ(converter.ResetToInputPosition(-1), 1);
    EXPECT_GE(converter.ResetToOutputPosition(INT64_MAX), 0);
    EXPECT_GE(converter.ResetToInputPosition(INT64_MAX), 0);
}

TEST(Converter, ChannelsAreKeptSpreadOrAveraged) {
    constexpr int16_t kLevel = 16384;
    struct Case {
        uint32_t from, to;
        int expected;  // of the last channel, where channel c is fed kLevel / (c + 1)
    };
    for (const Case& c : {Case{1, 1, kLevel}, {2, 2, kLevel / 2}, {1, 6, kLevel}, {2, 1, kLevel * 3 / 4}}) {
        Samples input;
        for (int i = 0; i < 200; ++i)
            for (uint32_t channel = 0; channel < c.from; ++channel)
                input.push_back(static_cast<int16_t>(kLevel / static_cast<int>(channel + 1)));
        CSampleRateConverter converter;
        converter.Configure(c.from, 44100, c.to, 48000);
        converter.ResetToOutputPosition(0);
        const Samples output = Convert(converter, input, c.from, c.to, 200, 1000);
        ASSERT_GT(output.size(), size_t{200} * c.to);
        EXPECT_NEAR(output[size_t{100} * c.to + c.to - 1], c.expected, 2) << c.from << " to " << c.to;
    }
}

TEST(Converter, ImpossibleChannelsCountFramesButWriteNothing) {
    const Samples input = Noise(300);
    Samples output(400, 77);
    CSampleRateConverter converter;
    converter.Configure(3, 44100, 2, 44100);
    uint32_t taken = 100;
    uint32_t made = 200;
    converter.Process(input.data(), &taken, output.data(), &made);
    EXPECT_EQ(made, 84u);  // the filter still waits for the 16 frames behind the last one
    EXPECT_EQ(output, Samples(400, 77));
}

TEST(Converter, FullScaleIsLimitedTowardsZero) {
    CSampleRateConverter converter;
    for (const int16_t level : {int16_t{32767}, int16_t{-32768}}) {
        converter.Configure(1, 44100, 2, 44100);
        converter.ResetToOutputPosition(0);
        const Samples output = Convert(converter, Samples(100, level), 1, 2, 100, 200);
        EXPECT_EQ(std::abs(output[100]), 32734);
    }
}

// Short offers stretch the warm-up; nothing may land outside its row (the sanitizers look) and nothing may
// hang.
TEST(Converter, ShortOffersInAnyOrderStayInTheHistory) {
    const Samples input = Noise(2 * 66);
    Samples output(4096);
    for (const int64_t start : {0, 5, 500}) {
        for (uint32_t first = 0; first <= 66; ++first) {
            for (const uint32_t second : {0u, 1u, 15u, 16u, 33u, 64u}) {
                CSampleRateConverter converter;
                converter.Configure(2, 44100, 2, 48000);
                converter.ResetToOutputPosition(start);
                for (const uint32_t offer : {first, second, 0u, first, 0u, 0u}) {
                    uint32_t taken = offer;
                    uint32_t made = 64;
                    converter.Process(input.data(), &taken, output.data(), &made);
                    ASSERT_LE(made, 64u);
                }
            }
        }
    }
}

TEST(Converter, AnOfferShorterThanTheWarmupChangesNothing) {
    const Samples input = Noise(2000);
    CSampleRateConverter converter;
    converter.Configure(1, 44100, 1, 48000);
    const int64_t from = converter.ResetToOutputPosition(500);
    const Samples rest(input.begin() + from, input.end());
    const Samples expected = Convert(converter, rest, 1, 1, 2000, 4000);
    converter.ResetToOutputPosition(500);
    Samples output(64);
    for (const uint32_t offer : {26u, 26u, 0u, 31u, 1u}) {
        uint32_t taken = offer;
        uint32_t made = 64;
        converter.Process(rest.data(), &taken, output.data(), &made);
        ASSERT_EQ(taken, 0u);
        ASSERT_EQ(made, 0u);
    }
    EXPECT_EQ(Convert(converter, rest, 1, 1, 2000, 4000), expected);
}

TEST(Converter, ShortFirstOfferBeginsLate) {
    CSampleRateConverter converter;
    converter.Configure(1, 44100, 2, 44100);
    converter.ResetToOutputPosition(0);
    Samples input(40, 0);
    input[0] = 20000;
    Samples output(200);
    uint32_t taken = 40;
    uint32_t made = 100;
    converter.Process(input.data(), &taken, output.data(), &made);
    ASSERT_EQ(taken, 40u);
    ASSERT_EQ(made, 32u);
    EXPECT_NEAR(output[16], 20000, 1);  // 40 frames where 48 were wanted: 8 frames of silence in front
    EXPECT_EQ(output[0], 0);
}

TEST(Converter, RatesAtEveryExtremeNeitherCrashNorHang) {
    const Samples input = Noise(400);
    Samples output(800);
    for (const int32_t source : {0, 1, -44100, 44100, 192000, INT32_MAX, INT32_MIN}) {
        for (const int32_t target : {0, 1, -1, 48000, INT32_MAX, INT32_MIN}) {
            for (const uint32_t channels : {0u, 1u, 2u}) {
                CSampleRateConverter converter;
                converter.Configure(channels, source, 2, target);
                EXPECT_GE(converter.InputStep(), 1);
                converter.ResetToInputPosition(12345);
                converter.ResetToOutputPosition(3);
                for (int call = 0; call < 4; ++call) {
                    uint32_t taken = call < 3 ? 200 : 0;
                    uint32_t made = 400;
                    converter.Process(input.data(), &taken, output.data(), &made);
                }
            }
        }
    }
}

}  // namespace
