// The choice among the formats that the module can write.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "AudioCodec/wave/riff/AudioFormatInfo.h"

// Rate in frames a second, channels, bits of a sample. In a wish 0 stands for any.
struct FormatWish {
    uint32_t rate = 0;
    uint32_t channels = 0;
    uint32_t bits = 0;
};

// Whether a format is what is wished for.
bool Fulfils(const vlacwav3::AudioFormatInfo& format, const FormatWish& wish);

// The index of the nearest to the source among those that fulfil the wish, or among all where none does:
// kept sample width first, then kept channels, then the rate, of two the higher. `formats` isn't empty.
uint32_t ChooseFormat(const std::vector<vlacwav3::AudioFormatInfo>& formats, const FormatWish& wish,
                      const FormatWish& source);

// "44100 Hz, 2 channels, 16 bits".
std::string DescribeFormat(const FormatWish& format);
std::string DescribeFormat(const vlacwav3::AudioFormatInfo& format);
