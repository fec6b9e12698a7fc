#include "AudioCodec/wave/riff/FormatInfo.h"

void FillFormatInfo(const WaveFormat& format, AudioFormatInfo* info) {
    info->version = 3;
    info->size = sizeof(AudioFormatInfo);
    info->channels = format.channels;
    info->samplesPerSec = format.samplesPerSec;
    info->avgBytesPerSec = format.avgBytesPerSec;
    info->blockAlign = format.blockAlign;
    info->bitsPerSample = format.bitsPerSample;
    info->reserved = 0;
}
