// What the head of a file tells of its audio, and how much of it is there. Plain data, filled by the scans of
// each container.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Frames by the size of the stored audio: whole units, and what the rest of one holds.
struct UnitSize {
    uint32_t bytes = 0;       // of a unit: a frame of PCM, a block of a codec; 0: only decoding tells lengths
    uint32_t frames = 0;      // in a unit
    uint32_t headBytes = 0;   // of a unit, before the frames of a part of it
    uint32_t headFrames = 0;  // that the head holds
    uint32_t stepBytes = 0;   // the least that follows the head; 0: a part of a unit holds nothing
    uint32_t stepFrames = 0;  // in a step
    bool standsAlone = false;  // decoding can begin at any unit

    int64_t FramesIn(uint64_t stored /*bytes*/) const;
};

// Bytes of the input.
struct Extent {
    uint64_t place = 0;
    uint64_t size = 0;
};

struct SourceFacts {
    const char* container = "";
    const char* codec = "";
    bool isWave = false;
    uint32_t rate = 0;
    uint32_t channels = 0;
    uint32_t bits = 0;         // of a stored sample; 0 where the codec has no fixed number
    uint32_t blockBytes = 0;   // 0: not known
    uint32_t channelMask = 0;  // 0: not told
    uint32_t codecTag = 0;     // 0: the container has none
    uint32_t directBits = 0;   // 8 or 16: PCM that the module reads by itself; 0: it has to be decoded
    UnitSize unit;

    uint64_t audioPlace = 0;                // of the first byte in the input
    std::optional<uint64_t> audioBytes;     // that are there; nothing: as many as an input in order gives
    std::optional<uint64_t> declaredBytes;  // by the head; nothing where it doesn't tell
    std::optional<int64_t> frames;          // that are there
    std::optional<int64_t> promised;        // by the head

    // The head that a decoder is shown in place of the file's own: as the file has it up to the audio, its
    // sizes still to be put in.
    std::vector<uint8_t> head;

    // Texts, for whoever asks. Of a WAV file the entries of its list, read later where the input can be moved
    // in, else kept.
    std::optional<Extent> infoList;                          // after its type
    std::vector<uint8_t> infoEntries;                        // of an input in order
    std::vector<std::pair<std::string, std::string>> texts;  // of AIFF: keyword and bytes
    // Of an input in order: chunks in front of the audio, of a list its type in place of the id. Of many the
    // first hundred.
    std::vector<uint32_t> passed;
    // Of an input that can be moved in: the first "id3 " chunk that is whole.
    std::optional<Extent> id3;

    // Whether decoding can tell nothing else: the sizes give the frames, of a form that the decoders take.
    bool IsSure() const;

    // Whether a file ends before what its head promises, as far as that can be told beforehand.
    bool IsCut() const {
        if (frames && promised) return *frames < *promised;
        return audioBytes && declaredBytes && *audioBytes < *declaredBytes;
    }
};
