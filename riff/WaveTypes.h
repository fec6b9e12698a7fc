// The facts of the RIFF WAVE format and of AIFF beside it, without behaviour.
#pragma once

#include "riff/ByteOrder.h"

namespace ChunkId {
inline constexpr uint32_t kRiff = FourCC("RIFF");
inline constexpr uint32_t kWave = FourCC("WAVE");
inline constexpr uint32_t kFmt = FourCC("fmt ");
inline constexpr uint32_t kData = FourCC("data");
inline constexpr uint32_t kFact = FourCC("fact");
inline constexpr uint32_t kList = FourCC("LIST");
inline constexpr uint32_t kInfo = FourCC("INFO");
inline constexpr uint32_t kJunk = FourCC("JUNK");    // filler that every reader passes over
inline constexpr uint32_t kPad = FourCC("PAD ");     // likewise, as other programs call it
inline constexpr uint32_t kUnfinished = 0;           // of a list that isn't whole yet
inline constexpr uint32_t kForm = FourCC("FORM");    // AIFF, where sizes are big-endian
inline constexpr uint32_t kAifc = FourCC("AIFC");    // AIFF whose audio may be compressed
inline constexpr uint32_t kCommon = FourCC("COMM");  // the format record of AIFF
}  // namespace ChunkId

inline constexpr uint32_t kFileHeaderSize = 12;  // id, size and type; the first chunk follows
inline constexpr uint32_t kChunkHeaderSize = 8;  // id and size
inline constexpr uint32_t kListTypeSize = 4;     // what a list's size counts before its sub-chunks
inline constexpr uint32_t kFactSampleCountSize = 4;
inline constexpr uint16_t kFormatTagPcm = 1;      // integer PCM; any other tag counts as compressed here
inline constexpr uint32_t kPcmFormatSize = 16;    // the record of PCM, and the least that a file may have
inline constexpr uint32_t kFormatFixedSize = 18;  // the record with its count of extra bytes
inline constexpr uint32_t kFormatExtraMost = 0xFFFF;
