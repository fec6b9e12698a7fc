// What reader and writer are held against.
#pragma once

#include <utility>
#include <vector>

#include "AudioCodec/wave/converter/CSampleRateConverter.h"
#include "tests/support/WavImage.h"

struct Shape {
    uint32_t channels, rate;
    bool operator==(const Shape&) const = default;
};

// Pairs of rates and channels in which the blocks of staging, converter and host meet in every way: strong
// and odd ratios, both ways.
struct Passage {
    Shape from, to;
};
inline std::vector<Passage> Passages() {
    constexpr std::pair<uint32_t, uint32_t> kRates[] = {
        {44100, 48000}, {48000, 44100},  {44100, 8000},   {8000, 44100},  {44100, 16000},
        {48000, 22050}, {192000, 8000},  {96000, 11025},  {88200, 48000}, {22050, 8000},
        {44100, 47999}, {192000, 44100}, {32000, 192000}, {44100, 44100}};
    std::vector<Passage> passages;
    for (const auto& [from, to] : kRates) {
        passages.push_back({{1, from}, {from == to ? 2U : 1U, to}});
        passages.push_back({{2, from}, {from == to ? 1U : 2U, to}});
        passages.push_back({{6, from}, {from % 7 ? 6U : 1U, to}});
    }
    return passages;
}

// Many of them end, in one of the passages, where the last frame of a staged block comes of less than all
// that is left of it.
inline constexpr uint32_t kBlockSizes[] = {2,  3,  4,  6,  7,   8,   11,  12,  14,  15,  16,  21, 24,
                                           26, 30, 31, 34, 35,  41,  42,  45,  52,  53,  59,  67, 70,
                                           71, 78, 81, 82, 111, 113, 128, 188, 500, 777, 2048};

// All that the converter makes of a whole input at once, tail included. A reader begins by
// ResetToOutputPosition.
inline Samples Converted(
    const Samples& samples, const Shape& from, const Shape& to,
    int64_t (CSampleRateConverter::*reset)(int64_t) = &CSampleRateConverter::ResetToInputPosition) {
    CSampleRateConverter converter;
    converter.Configure(from.channels, static_cast<int32_t>(from.rate), to.channels,
                        static_cast<int32_t>(to.rate));
    (converter.*reset)(0);
    auto taken = static_cast<uint32_t>(samples.size() / from.channels);
    auto made = static_cast<uint32_t>(uint64_t{taken} * to.rate / from.rate) + 100;
    Samples output(size_t{made} * to.channels);
    converter.Process(samples.data(), &taken, output.data(), &made);
    uint32_t none = 0;
    auto tail = static_cast<uint32_t>(output.size() / to.channels) - made;
    converter.Process(nullptr, &none, output.data() + size_t{made} * to.channels, &tail);
    output.resize(size_t{made + tail} * to.channels);
    return output;
}
