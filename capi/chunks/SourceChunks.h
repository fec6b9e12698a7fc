// The chunks of a source that can be moved in, one after the other, in the order of the file. One walk for
// all who carry, name or tell of them. Takes no memory but a block.
//
// Decisions: what follows audio of no told size is audio too, so that the walk ends with it.
#pragma once

#include "capi/chunks/ChunkFate.h"
#include "capi/input/InputSource.h"
#include "capi/input/SourceFacts.h"
#include "riff/ChunkWalk.h"

class SourceChunks {
public:
    // Both are borrowed.
    SourceChunks(Input& input, const SourceFacts& facts);

    // False where no further one follows. These throw what reading throws.
    bool Next();

    const Chunk& Current() const { return m_walk.Current(); }
    uint32_t ListType() const { return m_type; }  // 0 for what is no list, or cut off before it
    bool IsWhole() const;
    ChunkFate Fate() const { return FateOf(Current(), m_type, m_facts.isWave, IsWhole()); }
    // Stands after the type of a list, else at the content.
    ChunkWalk& Walk() { return m_walk; }

private:
    InputBlocks m_blocks;
    const SourceFacts& m_facts;
    ChunkWalk m_walk;
    uint32_t m_type = 0;
    bool m_isLast = false;
};
