#include "capi/audio/DownMix.h"

#include <cmath>

#include "capi/audio/ChannelMix.h"

namespace {

constexpr double kSide = 0.70710678118654752;       // of centre and surround
constexpr double kScale = 1.0 / (1.0 + 2 * kSide);  // what all of them at full scale come to is 1

// To the nearest, whatever the rounding mode of the program's thread is. The sum lies within the range of a
// sample.
int16_t Rounded(double value) { return static_cast<int16_t>(std::floor(value + 0.5)); }

}  // namespace

void MixToStereo(const int16_t* in, size_t frames, int16_t* out) {
    for (size_t i = 0; i < frames; ++i, in += kSurround, out += 2) {
        const double centre = kSide * in[2];
        const int16_t left = Rounded(kScale * (in[0] + centre + kSide * in[4]));
        const int16_t right = Rounded(kScale * (in[1] + centre + kSide * in[5]));
        out[0] = left;
        out[1] = right;
    }
}
