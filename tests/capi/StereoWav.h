// WAV files for what is built as C++17 too, which tests/support/WavImage.h isn't.
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

using Samples = std::vector<std::int16_t>;

// The same for the same count, each sample one above that before it.
inline Samples Ramp(std::size_t count) {
    Samples ramp(count);
    std::iota(ramp.begin(), ramp.end(), std::int16_t{-500});
    return ramp;
}

// A file of 44100 Hz, 2 channels, 16 bits.
inline std::string StereoWav(const Samples& samples) {
    const auto word = [](std::size_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i & 0xFF);
        return text;
    };
    std::string file = "WAVEfmt " + word(16, 4) + word(1, 2) + word(2, 2) + word(44100, 4) + word(176400, 4) +
                       word(4, 2) + word(16, 2) + "data" + word(samples.size() * 2, 4);
    for (const std::int16_t sample : samples) file += word(static_cast<std::uint16_t>(sample), 2);
    return "RIFF" + word(file.size(), 4) + file;
}
