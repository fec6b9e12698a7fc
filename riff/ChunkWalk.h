// The one walk over chunks: an id of four bytes, a size of 32 bits, the content, and a pad byte after an odd
// size. Knows no id and judges no size: what a chunk means, and whether its size is a lie, its caller says.
// Takes no memory.
//
//   ChunkWalk walk(source, ByteOrder::Little, 12);
//   while (walk.Next()) …    walk.Current() tells of the chunk, walk.Read takes from its content
#pragma once

#include "riff/ByteSource.h"
#include "riff/Chunk.h"

enum class ByteOrder { Little, Big };  // of sizes; an id is four bytes in any order

class ChunkWalk {
public:
    // The source, which stands at a chunk's header, is borrowed. `place` is what that place counts as.
    ChunkWalk(ByteSource& source, ByteOrder order, uint64_t place)
        : m_source(source), m_order(order), m_place(place) {}

    // Skips what is left of the current chunk, its pad byte too, and takes the next header. False where no
    // whole header follows, and where the source refuses to move.
    bool Next();
    // Whether the walk ended because the source refused to move.
    bool Refused() const { return m_refused; }

    const Chunk& Current() const { return m_chunk; }
    // For a caller that knows better than the header: the walk goes on after so many bytes.
    void SetSize(uint64_t size) { m_chunk.size = size; }

    // Reads from where the walk stands in the current chunk. False for fewer bytes. May throw bad_alloc where
    // the source does.
    bool Read(void* buffer, size_t count);
    // Moves on in the current chunk over what isn't wanted. False where the source refuses.
    bool Skip(uint64_t count);
    // Reads a header that stands in the content, as a list has them.
    bool ReadHeader(Chunk& chunk);

    ByteSource& Source() { return m_source; }

private:
    ByteSource& m_source;
    const ByteOrder m_order;
    uint64_t m_place;  // where the source stands, as counted here
    Chunk m_chunk;
    bool m_started = false;
    bool m_refused = false;
};
