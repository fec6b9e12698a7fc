// What a RIFF WAVE file holds beside its audio, as the host finds it by itself: enough to tell a user what an
// operation of the module can't keep, and whether a file is whole. Decodes nothing and judges nothing; a file
// that is no RIFF WAVE gives an empty result, a broken one what stands in front of the damage.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "riff/LittleEndian.h"

namespace InfoChunk {
inline constexpr uint32_t kTrack = FourCC("IARL");
inline constexpr uint32_t kDate = FourCC("ICRD");
inline constexpr uint32_t kTags = FourCC("vltg");
}  // namespace InfoChunk

struct RiffScan {
    uint64_t fileSize = 0;      // bytes
    uint64_t declaredSize = 0;  // bytes, as the RIFF header promises them; 0 where there is none
    // Chunks other than format, audio, the list of tags, and fillers; as text for the user.
    std::set<std::string> foreign;
    bool olderLists = false;  // there are "INFO" lists in front of the last, which no reader takes
    // The last "INFO" list: id and content, without the pad byte.
    std::map<uint32_t, std::string> info;
    // Names of the entries in the list's "vltg", lower case, Windows-1252.
    std::set<std::string> entryNames;

    bool IsWhole() const { return declaredSize != 0 && declaredSize == fileSize; }
};

// Reads chunk headers and the "INFO" list alone. Gives an empty result for what can't be read.
RiffScan ScanRiff(const std::string& path);
// An id as text in quotes; bytes that aren't printable become "?".
std::string ChunkName(uint32_t id);
