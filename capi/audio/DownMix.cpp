#include "capi/audio/DownMix.h"

#include <cmath>

namespace {

constexpr double kHalfPower = 0.70710678118654752440;  // of centre and surround
constexpr double kScale = 1 / (1 + 2 * kHalfPower);

int16_t Mix(int16_t side, int16_t centre, int16_t surround) {
    return static_cast<int16_t>(std::lround(kScale * (side + kHalfPower * centre + kHalfPower * surround)));
}

}  // namespace

void MixToStereo(const int16_t* in, size_t frames, int16_t* out) {
    for (; frames > 0; --frames, in += kMixedChannels, out += 2) {
        const int16_t left = Mix(in[0], in[2], in[4]);
        out[1] = Mix(in[1], in[2], in[5]);
        out[0] = left;
    }
}
