#include "capi/FormatChoice.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace {

bool Agrees(uint32_t wished, uint32_t value) { return wished == 0 || wished == value; }

// The smaller, the nearer.
auto Distance(const AudioFormatInfo& format, const FormatWish& source) {
    const uint32_t bits = source.bits == 8 ? 8 : 16;
    const uint32_t channels = source.channels > 2 ? 1 : source.channels;
    const int64_t rates = std::abs(int64_t{format.samplesPerSec} - int64_t{source.rate});
    return std::tuple(format.bitsPerSample != bits, format.channels != channels, rates,
                      -int64_t{format.samplesPerSec});
}

}  // namespace

bool Fulfils(const AudioFormatInfo& format, const FormatWish& wish) {
    return Agrees(wish.rate, format.samplesPerSec) && Agrees(wish.channels, format.channels) &&
           Agrees(wish.bits, format.bitsPerSample);
}

uint32_t ChooseFormat(const std::vector<AudioFormatInfo>& formats, const FormatWish& wish,
                      const FormatWish& source) {
    const auto nearest = std::min_element(formats.begin(), formats.end(),
                                          [&](const AudioFormatInfo& a, const AudioFormatInfo& b) {
                                              return std::pair(!Fulfils(a, wish), Distance(a, source)) <
                                                     std::pair(!Fulfils(b, wish), Distance(b, source));
                                          });
    return static_cast<uint32_t>(nearest - formats.begin());
}

std::string DescribeFormat(const FormatWish& format) {
    return std::to_string(format.rate) + " Hz, " + std::to_string(format.channels) +
           (format.channels == 1 ? " channel, " : " channels, ") + std::to_string(format.bits) + " bits";
}

std::string DescribeFormat(const AudioFormatInfo& format) {
    return DescribeFormat(FormatWish{format.samplesPerSec, format.channels, format.bitsPerSample});
}
