// Little-endian PCM in AIFC: libavformat takes it to be of 16 bits whatever the file says, or doesn't know
// its tag. Such a head is made to tell of big-endian PCM, which it knows of every width; the decoder then has
// to take the other order.
#pragma once

#include <span>

#include "platform/media/FFmpeg.h"

// Looks into the bytes that a file begins with, as far as they are there. True if they told of little-endian
// PCM and now tell of big-endian.
bool MakeBigEndian(std::span<uint8_t> head);

// The codec with the other order of bytes; the codec itself where there is none.
AVCodecID LittleEndianOf(AVCodecID codec);
