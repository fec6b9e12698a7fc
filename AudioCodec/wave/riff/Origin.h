// Where the offset of a Seek counts from.
#pragma once

#include <cstdint>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

inline constexpr uint32_t ORIGIN_START = 0;    // the first frame
inline constexpr uint32_t ORIGIN_CURRENT = 1;  // the next frame
inline constexpr uint32_t ORIGIN_END = 2;      // behind the last frame

}  // namespace vlacwav3
