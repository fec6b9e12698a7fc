#include "riff/ChunkWalk.h"

bool ChunkWalk::Next() {
    // The rest is reckoned from what was read, so a source that can't tell its place is walked like a file.
    const uint64_t end = m_started ? m_chunk.End() : m_place;
    m_started = true;
    // A caller that read past the chunk, or set a smaller size, isn't taken back: sources only move on.
    if (end > m_place) {
        m_refused = !m_source.Skip(end - m_place);
        if (m_refused) return false;
        m_place = end;
    }
    return ReadHeader(m_chunk);
}

bool ChunkWalk::Read(void* buffer, size_t count) {
    // Counted before it is known to succeed: after a short read the walk is at its end anyway.
    m_place += count;
    return m_source.Read(buffer, count);
}

bool ChunkWalk::ReadHeader(Chunk& chunk) {
    chunk.offset = m_place;
    uint8_t bytes[kChunkHeaderSize];
    if (!Read(bytes, sizeof bytes)) return false;
    chunk.id = LoadLE32(bytes);
    chunk.declared = m_order == ByteOrder::Little ? LoadLE32(bytes + 4) : LoadBE32(bytes + 4);
    chunk.size = chunk.declared;
    return true;
}

bool ChunkWalk::Skip(uint64_t count) {
    m_place += count;
    return m_source.Skip(count);
}
