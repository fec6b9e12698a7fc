// Keeps chunks from a demuxer that no audio needs: tags, pictures, markers. A file can have a million of
// them, and a demuxer may look through all that it has for each. While the head of a file passes, the headers
// of such chunks become those of filler, of one for a whole run of them. Places, sizes and audio stay.
//
// Decisions: of what audio needs the first 256 chunks are left as they are, and all of "data", since the
// demuxer of WAV goes on from one to the next. Audio whose size can't be true ends it,
// since nobody knows what follows. So does a jump past the next header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "riff/ChunkWalk.h"

class HiddenChunks {
public:
    // Changes bytes that stand at this place of the file and are read in order. Returns how many may be given
    // on: fewer than all where the end cuts through a header, which is to come again with what follows.
    size_t Pass(uint64_t place, std::span<uint8_t> bytes);
    // From here on nothing is changed: the audio is read.
    void End() { m_isActive = false; }

private:
    void Begin(std::span<const uint8_t> head);
    uint32_t SizeIn(const uint8_t* header) const;
    void Hide(uint8_t* header, uint64_t content, uint64_t end);

    bool m_isActive = true;
    ByteOrder m_order = ByteOrder::Little;
    uint64_t m_next = 0;        // place of the next header
    uint8_t* m_run = nullptr;   // header of the filler that can still grow
    uint64_t m_runContent = 0;  // place after it
    uint32_t m_wanted = 0;      // chunks that were left as they are, without "data"
};
