// Which channel counts can be made of which: one of any (their mean), any of one (each the same), and two of
// 5.1 (ITU-R BS.775).
#pragma once

#include <cstdint>

inline constexpr uint32_t kSurround =
    6;  // channels of 5.1: left, right, centre, LFE, left and right surround

constexpr bool IsDownMix(uint32_t from, uint32_t to) { return from == kSurround && to == 2; }

// Whether six channels are those, as a WAV file's mask of speakers has it, with the surround channels at the
// sides or at the back. Where no mask tells otherwise they are.
constexpr bool IsSurround(uint32_t mask) { return mask == 0 || mask == 0x3F || mask == 0x60F; }

constexpr bool CanMix(uint32_t from, uint32_t to, uint32_t mask = 0 /*of `from`*/) {
    return from == to || from == 1 || to == 1 || (IsDownMix(from, to) && IsSurround(mask));
}
