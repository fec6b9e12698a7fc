// The chunks of a source that a new WAV file gets beside its audio and tags, in the order of the source.
// Knows no file but the source: its owner says where the bytes go. Nothing is kept of them; each pass walks
// the source again.
//
// Decisions: of a source that is read in order nothing is carried. Where the source's tags aren't wanted, its
// "id3 " chunks aren't either.
#pragma once

#include "capi/chunks/CarriedChunk.h"
#include "capi/input/SourceFacts.h"
#include "riff/ByteSource.h"

// The file as it will be.
struct CarryTarget {
    uint32_t rate = 0;
    uint32_t channels = 0;
    uint32_t bits = 0;
    uint64_t firstFrame = 0;  // as FrameScale has it
    uint64_t frames = 0;      // 0: not known
    bool withTags = true;
};

class CarriedChunks {
public:
    // Both are borrowed. Throws what reading throws, as all of these.
    CarriedChunks(Input& input, const SourceFacts& facts, const CarryTarget& target);

    // Of all of them, with heads and pad bytes.
    uint64_t Bytes() const { return m_bytes; }
    void WriteTo(const ChunkCopy::Put& put) const;
    // Whether they are what stands in a file from where `file` stands, at `place`, to its end.
    bool AreIn(ByteSource& file, uint64_t place, uint64_t end) const;

private:
    template <class Visit>
    void ForEach(ChunkCopy& copy, Visit&& visit) const;

    Input& m_input;
    const SourceFacts& m_facts;
    const bool m_withTags;
    CarryRules m_rules;
    uint64_t m_bytes = 0;
};
