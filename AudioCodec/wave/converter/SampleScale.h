// The scales between 16-bit samples and the numbers that the filter works on.
#pragma once

#include <cstdint>

namespace SampleScale {

inline constexpr double kFull = 32767.0;
// What a sample is held to on the way in: the loudest sound that lasts comes out as 32734, not as full scale.
inline constexpr double kInputLimit = 0.999;
// On the way out, where -32768 never comes.
inline constexpr int32_t kOutputLimit = 32767;

// The limit of the input in steps of a sample, 32734.233: its whole part, and what lies beyond.
inline constexpr int16_t kWholeLimit = static_cast<int16_t>(kInputLimit * kFull);
inline constexpr double kExcess = kInputLimit * kFull - kWholeLimit;

}  // namespace SampleScale
