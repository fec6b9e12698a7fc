#include "capi/input/WaveCodecs.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>

#include "riff/WaveTypes.h"

namespace {

constexpr uint32_t kExtensible = 0xFFFE;

// Samples of a fixed width, as far as width and frame size agree.
UnitSize PlainUnit(const WaveFormat& format,
                   std::initializer_list<uint32_t> widths /*bytes, that are decoded*/) {
    const uint32_t width = (format.bitsPerSample + 7u) / 8u;
    const uint32_t frame = format.channels * width;
    UnitSize unit;
    if (frame == 0 || (format.blockAlign != frame && !format.IsDirectPcm())) return unit;
    if (std::find(widths.begin(), widths.end(), width) == widths.end()) return unit;
    unit.bytes = frame;
    unit.frames = 1;
    unit.standsAlone = true;
    return unit;
}

UnitSize PcmUnit(const WaveFormat& format) { return PlainUnit(format, {1, 2, 3, 4, 8}); }

UnitSize FloatUnit(const WaveFormat& format) {
    return format.bitsPerSample % 32 == 0 ? PlainUnit(format, {4, 8}) : UnitSize();
}

// One byte a sample, whatever the record says of bits.
UnitSize ByteUnit(const WaveFormat& format) {
    UnitSize unit;
    unit.bytes = format.channels;
    unit.frames = 1;
    unit.standsAlone = true;
    return unit;
}

// A block begins with a head of so many bytes for each channel, which holds `headFrames`; then come 4 bits a
// sample, in steps of `stepBytes` for all channels (Microsoft, "New Multimedia Data Types and Data
// Techniques", 1994).
UnitSize AdpcmUnit(const WaveFormat& format, uint32_t headBytes, uint32_t headFrames, uint32_t stepBytes) {
    UnitSize unit;
    const uint32_t head = headBytes * format.channels;
    if (format.bitsPerSample != 4 || format.channels == 0 || format.blockAlign < head) return unit;
    // What is left of a block puts decoders out of step.
    if ((format.blockAlign - head) % stepBytes != 0) return unit;
    unit.headBytes = head;
    unit.headFrames = headFrames;
    unit.stepBytes = stepBytes;
    unit.stepFrames = unit.stepBytes * 2 / format.channels;
    unit.frames = headFrames + (format.blockAlign - head) / unit.stepBytes * unit.stepFrames;
    unit.bytes = format.blockAlign;
    unit.standsAlone = true;
    return unit;
}

// Decoders take up to so many channels of each.
UnitSize ImaUnit(const WaveFormat& format) {
    return format.channels <= 2 ? AdpcmUnit(format, 4, 1, 4u * format.channels) : UnitSize();
}

// Of two channels each byte holds a sample of both.
UnitSize MicrosoftUnit(const WaveFormat& format) {
    return format.channels <= 6 ? AdpcmUnit(format, 7, 2, format.channels > 2 ? format.channels : 1)
                                : UnitSize();
}

// ETSI GSM 06.10 in pairs of frames: 65 bytes are 320 samples. What comes before a block is part of it.
UnitSize GsmUnit(const WaveFormat& format) {
    UnitSize unit;
    if (format.blockAlign != 65 || format.channels != 1) return unit;
    unit.bytes = 65;
    unit.frames = 320;
    return unit;
}

constexpr WaveCodec kCodecs[] = {
    {0x0001, "PCM", true, PcmUnit},          {0x0002, "MS ADPCM", true, MicrosoftUnit},
    {0x0003, "IEEE float", true, FloatUnit}, {0x0006, "A-law", true, ByteUnit},
    {0x0007, "mu-law", true, ByteUnit},      {0x0011, "IMA ADPCM", true, ImaUnit},
    {0x0020, "Yamaha ADPCM", true, nullptr}, {0x0031, "GSM 6.10", false, GsmUnit},
    {0x0040, "G.721", true, nullptr},        {0x0045, "G.726", true, nullptr},
    {0x0050, "MPEG audio", false, nullptr},  {0x0055, "MP3", false, nullptr},
    {0x0061, "DK4 ADPCM", true, nullptr},    {0x0062, "DK3 ADPCM", true, nullptr},
    {0x0064, "G.726", true, nullptr},        {0x0065, "G.722", false, nullptr},
    {0x00FF, "AAC", false, nullptr},         {0x0160, "WMA 1", false, nullptr},
    {0x0161, "WMA 2", false, nullptr},       {0x0200, "Creative ADPCM", true, nullptr},
    {0x0270, "ATRAC3", false, nullptr},      {0x1600, "AAC", false, nullptr},
    {0x2000, "AC-3", false, nullptr},        {0x2001, "DTS", false, nullptr},
    {0x566F, "Vorbis", false, nullptr},      {0xA109, "Speex", false, nullptr},
    {0xF1AC, "FLAC", false, nullptr},
};
constexpr WaveCodec kUnknown = {0, "unknown", false, nullptr};

}  // namespace

const WaveCodec& FindWaveCodec(uint32_t tag) {
    const auto* const row = std::find_if(std::begin(kCodecs), std::end(kCodecs),
                                         [&](const WaveCodec& codec) { return codec.tag == tag; });
    return row == std::end(kCodecs) ? kUnknown : *row;
}

WaveShape ShapeOf(const WaveFormat& format) {
    // Of the extension: valid bits, channel mask, and the codec's id, which begins with its tag and goes on
    // as all ids of tags do.
    constexpr size_t kMaskPlace = 2;
    constexpr size_t kTagPlace = 6;
    constexpr uint8_t kTagIdRest[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                        0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
    const std::vector<uint8_t>& extra = format.extra;
    if (format.formatTag != kExtensible || extra.size() < kTagPlace + 2 + sizeof kTagIdRest)
        return {format.formatTag, 0};
    const bool isTag = std::memcmp(&extra[kTagPlace + 2], kTagIdRest, sizeof kTagIdRest) == 0;
    return {isTag ? LoadLE16(&extra[kTagPlace]) : kExtensible, LoadLE32(&extra[kMaskPlace])};
}
