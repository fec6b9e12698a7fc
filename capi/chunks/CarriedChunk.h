// How a chunk of one kind comes into a file: what size it has there, and how its content is made. For
// CarriedChunks, which has them in a table.
#pragma once

#include <string>

#include "capi/chunks/ChunkCopy.h"
#include "capi/chunks/FrameScale.h"
#include "riff/Chunk.h"

// What all of them need to know.
struct CarryRules {
    FrameScale scale;
    bool isDirect = false;  // the source's audio has no blocks
    std::string history;    // the line that a coding history gets; empty for none
};

// A chunk of the source that is whole. Sizes are in bytes, without head and pad byte.
struct CarriedChunk {
    const Chunk& source;
    const CarryRules& rules;

    uint64_t Place() const { return source.Content(); }
    uint64_t Size() const { return source.size; }
};

using SizeOfCarried = uint64_t (*)(const CarriedChunk& chunk, ChunkCopy& copy);
using CopyCarried = void (*)(const CarriedChunk& chunk, ChunkCopy& copy);

inline uint64_t SameSize(const CarriedChunk& chunk, ChunkCopy&) { return chunk.Size(); }
inline void CopyAsItIs(const CarriedChunk& chunk, ChunkCopy& copy) {
    copy.Range(chunk.Place(), chunk.Size());
}
