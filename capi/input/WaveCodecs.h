// The codecs of WAV by their format tags: name, and how the stored bytes make frames.
#pragma once

#include "capi/input/SourceFacts.h"
#include "riff/WaveFormat.h"

struct WaveCodec {
    uint32_t tag;
    const char* name;
    bool hasBits;                                // the record's number of bits means something
    UnitSize (*unit)(const WaveFormat& format);  // null: only decoding tells
};

// The codec of a tag; one without a name for a tag that isn't listed.
const WaveCodec& FindWaveCodec(uint32_t tag);

// What an extensible format is made of; the tag itself for any other.
struct WaveShape {
    uint32_t tag;
    uint32_t channelMask;
};
WaveShape ShapeOf(const WaveFormat& format);
