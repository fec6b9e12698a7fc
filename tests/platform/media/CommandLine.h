// Files and decodings made by the ffmpeg command line, which has no part in what is tested.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

inline std::vector<uint8_t> OutputOf(const std::string& command) {
    FILE* const pipe = popen(command.c_str(), "r");
    if (!pipe) throw std::runtime_error(command);
    std::vector<uint8_t> bytes;
    uint8_t part[65536];
    while (const size_t count = fread(part, 1, sizeof(part), pipe))
        bytes.insert(bytes.end(), part, part + count);
    if (pclose(pipe) != 0) throw std::runtime_error("failed: " + command);
    return bytes;
}

// A tone and noise, beyond full scale here and there, in as many channels. A pipe may stand in the options.
inline void MakeFile(const std::string& path, int channels, int rate, const std::string& options,
                     const std::string& seconds = "2.37") {
    std::string signal;
    for (int channel = 0; channel < channels; ++channel) {
        if (channel) signal += "|";
        signal += "0.9*sin(" + std::to_string(300 + 70 * channel) + "*t*6.28)+0.4*(random(" +
                  std::to_string(channel) + ")-0.5)";
    }
    OutputOf("ffmpeg -v error -nostdin -y -f lavfi -i \"aevalsrc='" + signal + "':s=" + std::to_string(rate) +
             ":d=" + seconds + "\" " + options + " '" + path + "'");
}

template <class Sample = int16_t>
std::vector<Sample> DecodedByFFmpeg(const std::string& path) {
    const std::string form = sizeof(Sample) == 2 ? "s16le" : "s32le";
    const std::vector<uint8_t> bytes =
        OutputOf("ffmpeg -v error -nostdin -i '" + path + "' -f " + form + " -c:a pcm_" + form + " -");
    std::vector<Sample> samples(bytes.size() / sizeof(Sample));
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    return samples;
}

// Of whole numbers, which ffmpeg would cut off: to nearest, ties up, clipped.
inline std::vector<int16_t> RoundedFromFFmpeg(const std::string& path) {
    std::vector<int16_t> samples;
    for (const int64_t sample : DecodedByFFmpeg<int32_t>(path))
        samples.push_back(static_cast<int16_t>(std::min<int64_t>((sample + 0x8000) >> 16, 32767)));
    return samples;
}
