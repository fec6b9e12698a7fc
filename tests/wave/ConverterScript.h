// Any bytes as a life of the converter: rates, channels and a signal, then resets and offers of any size with
// room of any size. Plays it to the converter and to its definition, and says where they part.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "AudioCodec/wave/converter/CSampleRateConverter.h"
#include "tests/wave/BatchConverter.h"

// A life of 60 bytes.
inline std::vector<uint8_t> RandomScript(uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> script(60);
    for (uint8_t& byte : script) byte = static_cast<uint8_t>(random());
    return script;
}

class ConverterScript {
public:
    ConverterScript(const uint8_t* bytes, size_t size) : m_bytes(bytes), m_left(size) {}

    // Empty where all samples, counts and states were the same.
    std::string Play(const ConverterKernel& kernel) {
        constexpr int32_t kRates[] = {8000,  11025, 12000, 16000,  22050, 24000, 32000, 44100,
                                      48000, 88200, 96000, 192000, 47999, 44100, 48000, 1000};
        const uint32_t rates = Next();
        const int32_t from = kRates[rates % 16];
        const int32_t to = kRates[rates / 16];
        const uint32_t shape = Next();
        const uint32_t channels = std::max(shape % 8, 1U);
        const uint32_t outChannels = channels == 1 ? 1 + shape / 8 % 3 : shape / 8 % 4 == 0 ? 1 : channels;
        const std::vector<int16_t> input = Signal(Next() % 9, channels);

        CSampleRateConverter converter;
        converter.UseKernel(kernel);
        converter.Configure(channels, from, outChannels, to);
        BatchConverter definition(channels, outChannels, converter.PhaseCount(), converter.InputStep(),
                                  std::min(1.0, static_cast<double>(to) / from));
        converter.ResetToInputPosition(0);
        definition.ResetToInput(0);
        std::vector<int16_t> made(size_t{kMost} * outChannels);
        std::vector<int16_t> due = made;
        for (size_t at = 0; m_left != 0;) {
            const uint32_t action = Next();
            if (action < 16) {
                at = 0;
                const int64_t position = Next16() * 7 / 2;
                if (action % 2 == 0
                        ? converter.ResetToOutputPosition(position) != definition.ResetToOutput(position)
                        : converter.ResetToInputPosition(position) != definition.ResetToInput(position))
                    return "a reset";
                continue;
            }
            const auto left = static_cast<uint32_t>(input.size() / channels - at);
            // Often nothing or next to nothing: what warms up, ends or begins again lives on that.
            const uint32_t wish = action < 64 ? Next() % 50 : action < 96 ? 0 : Next16() % kMost;
            const uint32_t offer = std::min(wish, left);
            const auto room = static_cast<uint32_t>(action % 4 == 0 ? Next() : Next16() % kMost);
            if (action % 16 == 15) {
                converter.EndWith(offer);
                definition.EndWith(offer);
            }
            if (converter.WantedOffer() != definition.WantedOffer()) return "the offer that is wanted";
            uint32_t taken = offer, given = room, takenDue = offer, givenDue = room;
            converter.Process(&input[at * channels], &taken, made.data(), &given);
            definition.Process(&input[at * channels], &takenDue, due.data(), &givenDue);
            const std::string where = std::to_string(from) + " to " + std::to_string(to) + ", " +
                                      std::to_string(channels) + " channels to " +
                                      std::to_string(outChannels) + ": ";
            if (taken != takenDue) return where + "frames taken";
            if (given != givenDue) return where + "frames given";
            // Also what lies after them, which is nobody's to write.
            if (made != due) return where + "samples";
            at = std::min(at + taken, input.size() / channels - 1);
        }
        return {};
    }

private:
    static constexpr uint32_t kMost = 3000;
    static constexpr size_t kInputFrames = 9000;

    uint32_t Next() {
        if (m_left == 0) return 0;
        --m_left;
        return *m_bytes++;
    }
    uint32_t Next16() {
        const uint32_t high = Next();
        return high << 8 | Next();
    }

    // Signals that sit on bounds: whole numbers, halves, the limit of the input, one step of noise, silence.
    std::vector<int16_t> Signal(uint32_t kind, uint32_t channels) {
        std::mt19937 random(Next16());
        std::vector<int16_t> samples(kInputFrames * channels);
        for (size_t i = 0; i < samples.size(); ++i) {
            const size_t frame = i / channels;
            const auto t = static_cast<double>(frame);
            const auto any = static_cast<int>(random());
            const auto sine = [&](double peak) {
                return static_cast<int>(
                    std::lround(peak * std::sin(t * 0.05 * (1 + static_cast<int>(i % channels)))));
            };
            const int values[] = {static_cast<int16_t>(any),
                                  any % 2,
                                  sine(16000),
                                  sine(50000),
                                  (any & 0xFF) * 256 - 32768,
                                  static_cast<int>(t) / 300 % 2 != 0 ? 12345 : 0,
                                  (any & 1) != 0 ? 32767 : -32768,
                                  any % 64 == 0 ? any % 32768 : 0,
                                  32734 + any % 3};
            samples[i] = static_cast<int16_t>(std::clamp(values[kind], -32768, 32767));
        }
        return samples;
    }

    const uint8_t* m_bytes;
    size_t m_left;
};
