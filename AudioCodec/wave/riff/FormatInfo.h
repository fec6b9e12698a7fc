// From the format record of a file to the record that a host is told.
#pragma once

#include "AudioCodec/wave/riff/AudioFormatInfo.h"
#include "riff/WaveFormat.h"

// Tells a format to the host: version 3, size 28, reserved 0; the unused field is not written.
void FillFormatInfo(const WaveFormat& format, AudioFormatInfo* info);
