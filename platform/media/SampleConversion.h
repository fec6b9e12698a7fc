// Decoded samples of any form as interleaved 16-bit PCM: nearest values, ties of integers up, clipped,
// without dither. No change of rate or channels.
#pragma once

#include <cstdint>

#include "platform/media/FFmpeg.h"

// Whether there is a way from the form of the samples.
bool CanConvert(AVSampleFormat format);

// Writes the frames from `first` on, all channels of each, to `out`. The form is one of CanConvert.
void ToPcm16(const AVFrame& frame, int first, int16_t* out);
