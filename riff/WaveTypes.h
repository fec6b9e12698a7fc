// The facts of the RIFF WAVE format, without behaviour.
#pragma once

#include "riff/LittleEndian.h"

namespace ChunkId {
inline constexpr uint32_t kRiff = FourCC("RIFF");
inline constexpr uint32_t kWave = FourCC("WAVE");
inline constexpr uint32_t kFmt = FourCC("fmt ");
inline constexpr uint32_t kData = FourCC("data");
inline constexpr uint32_t kFact = FourCC("fact");
inline constexpr uint32_t kList = FourCC("LIST");
inline constexpr uint32_t kInfo = FourCC("INFO");
inline constexpr uint32_t kJunk = FourCC("JUNK");  // filler that every reader passes over
inline constexpr uint32_t kUnfinished = 0;         // of a list that isn't whole yet
}  // namespace ChunkId

inline constexpr uint32_t kChunkHeaderSize = 8;  // id and size
inline constexpr uint32_t kListTypeSize = 4;     // what a list's size counts in front of its sub-chunks
inline constexpr uint32_t kFactSampleCountSize = 4;
inline constexpr uint16_t kFormatTagPcm = 1;  // integer PCM; any other tag counts as compressed here
inline constexpr uint32_t kPcmFormatSize =
    16;  // the record on disk for PCM, and the least that a file may have
inline constexpr uint32_t kFormatFixedSize = 18;  // the record with its count of extra bytes
inline constexpr uint32_t kFormatExtraMost = 0xFFFF;
