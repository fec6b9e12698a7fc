// Two channels of 5.1: left + centre and left surround at 0.7071 each, likewise right, without the LFE
// channel (ITU-R BS.775-3, table 2), all scaled by 1 / (1 + 2 * 0.7071) so that nothing can clip.
#pragma once

#include <cstddef>
#include <cstdint>

// `in` has frames of left, right, centre, LFE, left surround and right surround. `out` may be `in`.
void MixToStereo(const int16_t* in, size_t frames, int16_t* out);
