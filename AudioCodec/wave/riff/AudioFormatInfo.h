// The record in which the module tells a format to its host. It crosses the border: the layout is fixed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

// A format, as the file or the row of stock formats has it.
struct AudioFormatInfo {
    uint32_t version;         // 3
    uint32_t size;            // 28
    uint16_t channels;        // samples in a frame
    uint16_t unused;          // never written by the module
    uint32_t samplesPerSec;   // frames per second
    uint32_t avgBytesPerSec;  // blockAlign × samplesPerSec in PCM
    uint16_t blockAlign;      // bytes in a frame
    uint16_t bitsPerSample;   // of a stored sample
    uint32_t reserved;        // 0
};
static_assert(sizeof(AudioFormatInfo) == 28 && offsetof(AudioFormatInfo, samplesPerSec) == 12 &&
              offsetof(AudioFormatInfo, blockAlign) == 20 && offsetof(AudioFormatInfo, reserved) == 24);

}  // namespace vlacwav3
