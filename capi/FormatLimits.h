// Between which numbers a program may ask for audio.
#pragma once

#include <cstdint>

namespace FormatLimits {

inline constexpr uint32_t kLeastRate = 1000;  // frames per second
inline constexpr uint32_t kMostRate = 768000;
inline constexpr uint32_t kMostChannels = 255;

constexpr bool IsRate(uint32_t rate) { return rate >= kLeastRate && rate <= kMostRate; }

}  // namespace FormatLimits
