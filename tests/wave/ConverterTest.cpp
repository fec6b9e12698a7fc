#include <gtest/gtest.h>

#include <cmath>

#include "AudioCodec/wave/converter/CSampleRateConverter.h"
#include "tests/support/WavImage.h"

namespace {

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

TEST_P(ConverterRates, AnyDivisionIntoBlocksEqualsTheDirectSum) {
    const auto [source, outputRate, phases, step] = GetParam();
    const Samples input = Noise(3000);
    CSampleRateConverter converter;
    for (const auto& [offer, room] : {std::pair{4096u, 100000u}, {64u, 7u}, {2048u, 1u}}) {
        converter.Configure(1, source, 1, outputRate);
        ASSERT_EQ(converter.PhaseCount(), phases);
        ASSERT_EQ(converter.InputStep(), step);
        ASSERT_EQ(converter.ResetToOutputPosition(0), 0);
        const Samples output = Convert(converter, input, 1, 1, offer, room);
        ASSERT_EQ(static_cast<int>(output.size()),
                  (3000 * phases + step - 1) / step);  // all that begin within
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

TEST(Converter, ChannelsAreKeptSpreadOrAveraged) {
    const struct {
        uint32_t from, to;
        int expected;  // of the last channel, where channel c is fed 18000 / (c + 1)
    } rows[] = {{1, 1, 18000}, {2, 2, 9000}, {3, 3, 6000}, {1, 6, 18000}, {2, 1, 13500}, {3, 1, 11000}};
    for (const auto& [from, to, expected] : rows) {
        Samples input;
        for (size_t i = 0; i < size_t{200} * from; ++i)
            input.push_back(static_cast<int16_t>(18000 / (i % from + 1)));
        CSampleRateConverter converter;
        converter.Configure(from, 44100, to, 48000);
        converter.ResetToOutputPosition(0);
        const Samples output = Convert(converter, input, from, to, 200, 1000);
        ASSERT_GT(output.size(), size_t{200} * to);
        EXPECT_NEAR(output[size_t{100} * to + to - 1], expected, 2) << from << " to " << to;
    }
}

// An offer below the warm-up is the end of a source: its frames are consumed without a frame coming of them,
// and the tail brings all that are due. One that would only stretch the warm-up, for ever, is the owner's to
// announce.
TEST(Converter, SourcesShorterThanTheWarmupComeOutWhole) {
    for (const auto& [source, outputRate] : {std::pair{44100, 48000}, {48000, 8000}, {8000, 48000}}) {
        CSampleRateConverter converter;
        converter.Configure(1, source, 1, outputRate);
        const int64_t phases = converter.PhaseCount();
        const int64_t step = converter.InputStep();
        for (const int64_t position : {0, 1, 17, 40, 500}) {
            const int64_t first = position * step / phases;  // under the filter's centre
            for (int64_t frames = first + 1; frames < first + 24; ++frames) {
                const Samples input = Noise(static_cast<size_t>(frames));
                const int64_t from = converter.ResetToOutputPosition(position);
                const auto offer = static_cast<uint32_t>(frames - from);
                const uint32_t wanted = converter.WantedOffer();
                if (2 * offer >= wanted) continue;
                uint32_t taken = offer;
                uint32_t made = 400;
                Samples output(400);
                converter.EndWith(offer);
                converter.Process(input.data() + from, &taken, output.data(), &made);
                ASSERT_EQ(taken, offer);
                if (offer <= wanted - 32) {
                    ASSERT_EQ(made, 0U);
                }
                uint32_t tail = 400 - made;
                converter.Process(nullptr, &(taken = 0), output.data() + made, &tail);
                ASSERT_EQ(taken, 0U);
                made += tail;
                ASSERT_EQ(made, (frames * phases + step - 1) / step - position) << frames;
                for (uint32_t i = 0; i < made; ++i)
                    ASSERT_EQ(output[i], DirectSample(input, position + i, phases, step,
                                                      std::min(1.0, 1.0 * outputRate / source)));
            }
        }
    }
}

TEST(Converter, RatesAndChannelsAtEveryExtremeNeitherCrashNorHang) {
    const Samples input = Noise(600);
    for (const int32_t source : {0, 1, -44100, 44100, 192000, INT32_MAX, INT32_MIN}) {
        for (const int32_t target : {0, 1, -1, 48000, INT32_MAX, INT32_MIN}) {
            for (const uint32_t channels : {0u, 1u, 2u, 3u}) {
                Samples output(800, 77);
                CSampleRateConverter converter;
                converter.Configure(channels, source, 2, target);
                EXPECT_GE(converter.InputStep(), 1);
                EXPECT_GE(converter.ResetToInputPosition(INT64_MAX), 0);
                EXPECT_GE(converter.ResetToOutputPosition(INT64_MAX), 0);
                converter.ResetToOutputPosition(3);
                for (int call = 0; call < 4; ++call) {
                    uint32_t taken = call < 3 ? 200 : 0;
                    uint32_t made = 400;
                    converter.Process(input.data(), &taken, output.data(), &made);
                }
                EXPECT_TRUE(channels != 3 || output == Samples(800, 77)) << "2 channels of 3";
            }
        }
    }
}

}  // namespace
