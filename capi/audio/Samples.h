// The two forms of a sample that programs know: 16 bits, as the codec has it, and float.
#pragma once

#include <cstdint>

// 1 stands for 32768, which is one step more than 16 bits hold.
inline constexpr float kFullScale = 32768.0F;

// Exact, so that a sample comes back unchanged from FromFloat.
constexpr float ToFloat(int16_t sample) { return static_cast<float>(sample) / kFullScale; }

// To the nearest step, of two equally near the even one, limited to what 16 bits hold; 0 for NaN. Without the
// library's rounding, which follows the rounding mode of the program's thread.
constexpr int16_t FromFloat(float sample) {
    const double scaled = static_cast<double>(sample) * kFullScale;
    if (scaled != scaled) return 0;
    if (scaled >= INT16_MAX) return INT16_MAX;
    if (scaled <= INT16_MIN) return INT16_MIN;
    auto below = static_cast<int32_t>(scaled);
    if (below > scaled) --below;  // a cast goes towards 0
    const double above = scaled - below;
    const bool up = above > 0.5 || (above == 0.5 && (below & 1) != 0);
    return static_cast<int16_t>(below + (up ? 1 : 0));
}
