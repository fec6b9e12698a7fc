#include "riff/WaveFormat.h"

#include <algorithm>

#include "riff/WaveTypes.h"

bool WaveFormat::IsDirectPcm() const {
    return formatTag == kFormatTagPcm && (bitsPerSample == 8 || bitsPerSample == 16);
}

uint32_t WaveFormat::DiskSize() const {
    return formatTag == kFormatTagPcm ? kPcmFormatSize
                                      : kFormatFixedSize + static_cast<uint32_t>(extra.size());
}

WaveFormat WaveFormat::Pcm(uint32_t channels, uint32_t samplesPerSec, uint32_t bitsPerSample) {
    WaveFormat format;
    format.formatTag = kFormatTagPcm;
    format.channels = static_cast<uint16_t>(channels);
    format.samplesPerSec = samplesPerSec;
    format.bitsPerSample = static_cast<uint16_t>(bitsPerSample);
    const uint32_t frameBits = uint32_t{format.bitsPerSample} * format.channels;
    format.blockAlign = static_cast<uint16_t>(frameBits / 8);
    format.avgBytesPerSec = static_cast<uint32_t>(uint64_t{frameBits} * samplesPerSec / 8);
    return format;
}

WaveFormat WaveFormat::Load(const uint8_t* record, uint32_t size) {
    WaveFormat format;
    format.formatTag = LoadLE16(record);
    format.channels = LoadLE16(record + 2);
    format.samplesPerSec = LoadLE32(record + 4);
    format.avgBytesPerSec = LoadLE32(record + 8);
    format.blockAlign = LoadLE16(record + 12);
    format.bitsPerSample = LoadLE16(record + 14);
    if (size > kFormatFixedSize) {
        const uint32_t claimed = LoadLE16(record + kPcmFormatSize);
        const uint32_t held = std::min(claimed, size - kFormatFixedSize);
        format.extra.assign(record + kFormatFixedSize, record + kFormatFixedSize + held);
    }
    return format;
}

void WaveFormat::StoreFixed(uint8_t* record) const {
    StoreLE16(record, formatTag);
    StoreLE16(record + 2, channels);
    StoreLE32(record + 4, samplesPerSec);
    StoreLE32(record + 8, avgBytesPerSec);
    StoreLE16(record + 12, blockAlign);
    StoreLE16(record + 14, bitsPerSample);
    StoreLE16(record + kPcmFormatSize, static_cast<uint16_t>(extra.size()));
}
