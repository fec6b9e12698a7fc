// The two widths that the module stores, one made of the other. 8-bit samples of WAV have their middle at
// 128, wider ones at 0.
#pragma once

#include <cstdint>

// 255 becomes 32512, not 32767.
constexpr int16_t WidenSample(uint8_t byte) { return static_cast<int16_t>((byte - 128) * 256); }

// The high byte with its sign turned round; the low one is dropped.
constexpr uint8_t NarrowSample(int16_t sample) { return static_cast<uint8_t>((sample >> 8) + 128); }
