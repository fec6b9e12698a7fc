// Six channels in the order left, right, centre, low frequencies, left and right surround, mixed to two by
// ITU-R BS.775, scaled so that nothing clips.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr uint32_t kMixedChannels = 6;

// Rounds to the nearest. `in` and `out` may be the same place.
void MixToStereo(const int16_t* in, size_t frames, int16_t* out);
