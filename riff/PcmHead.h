// The head of a WAV file of plain PCM: all of it up to the first byte of audio. Knows nothing of what follows
// the audio but its size.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "riff/ByteOrder.h"
#include "riff/WaveFormat.h"
#include "riff/WaveTypes.h"

inline constexpr size_t kPcmHeadSize = kFileHeaderSize + kChunkHeaderSize + kPcmFormatSize + kChunkHeaderSize;
using PcmHead = std::array<uint8_t, kPcmHeadSize>;

// Sizes in bytes, as they are to stand there: of the file without its first 8 bytes, and of the audio.
inline PcmHead MakePcmHead(const WaveFormat& format, uint32_t fileSize, uint32_t audioSize) {
    PcmHead head;
    uint8_t record[kFormatFixedSize];
    format.StoreFixed(record);
    StoreLE32(&head[0], ChunkId::kRiff);
    StoreLE32(&head[4], fileSize);
    StoreLE32(&head[8], ChunkId::kWave);
    StoreLE32(&head[12], ChunkId::kFmt);
    StoreLE32(&head[16], kPcmFormatSize);
    std::copy_n(record, kPcmFormatSize, &head[20]);
    StoreLE32(&head[kPcmHeadSize - 8], ChunkId::kData);
    StoreLE32(&head[kPcmHeadSize - 4], audioSize);
    return head;
}
