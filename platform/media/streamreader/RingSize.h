// How much decoded audio waits for its reader.
#pragma once

#include <cstddef>

// Bytes, nearly six seconds of a CD's audio, so that decoder and reader seldom wake each other.
inline constexpr size_t kRingSize = size_t{1024} * 1024;
