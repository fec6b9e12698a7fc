// What a RIFF WAVE file holds beside its audio, as the host finds it by itself: enough to tell a user what an
// operation of the module can't keep, and whether a file is whole. Decodes nothing and judges nothing; a file
// that is no RIFF WAVE returns an empty result, a broken one what stands before the damage.
#pragma once

#include <cstdint>
#include <string>

#include "host/NameSample.h"
#include "riff/InfoChunks.h"

struct RiffScan {
    uint64_t fileSize = 0;      // bytes
    uint64_t declaredSize = 0;  // bytes, as the RIFF header promises them; 0 where there is none
    // Chunks other than format, audio, the list of tags, and fillers; as text for the user.
    NameSample foreign;
    bool olderLists = false;  // there are "INFO" lists before the last, which no reader takes
    // Of the last "INFO" list: the chunks that hold one tag each, the names of those that hold none, and the
    // names of the entries of "vltg" that no tag is stored under, in lower case and in the ANSI code page.
    InfoChunks tags;
    NameSample texts;
    NameSample entries;

    bool IsWhole() const { return declaredSize != 0 && declaredSize == fileSize; }
};

enum class ForeignTexts {
    Name,      // in RiffScan::texts
    PassOver,  // `texts` stays empty: nobody will be told of them
};

// Reads chunk headers and the "INFO" list alone, and of that list holds the chunks of tags alone. Returns an
// empty result for what can't be read. Throws Failure for more than 64 MiB of tags.
RiffScan ScanRiff(const std::string& path, ForeignTexts texts = ForeignTexts::Name);

// Throws Failure likewise, without a look at the tags themselves.
void RefuseHugeTags(const std::string& path);

// The last "INFO" list of a WAV file, whole; false where the file is none. Throws Failure likewise.
bool ReadInfoOf(const std::string& path, InfoChunks& info);
