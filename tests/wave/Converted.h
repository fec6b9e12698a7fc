// What reader and writer are held against.
#pragma once

#include "AudioCodec/wave/converter/CSampleRateConverter.h"
#include "tests/support/WavImage.h"

struct Shape {
    uint32_t channels, rate;
    bool operator==(const Shape&) const = default;
};

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
