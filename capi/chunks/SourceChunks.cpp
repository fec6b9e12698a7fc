#include "capi/chunks/SourceChunks.h"

SourceChunks::SourceChunks(Input& input, const SourceFacts& facts)
    : m_blocks(input),
      m_facts(facts),
      m_walk(m_blocks, facts.isWave ? ByteOrder::Little : ByteOrder::Big, kFileHeaderSize) {
    m_blocks.MoveTo(kFileHeaderSize);
}

bool SourceChunks::Next() {
    if (m_isLast || !m_walk.Next()) return false;
    const Chunk& chunk = Current();
    // AIFF counts an offset and the block's size as content.
    const bool isAudio = m_facts.isWave ? chunk.Content() == m_facts.audioPlace : chunk.id == FourCC("SSND");
    m_isLast = isAudio && (!m_facts.declaredBytes || (!m_facts.isWave && chunk.size == 0));
    m_type = 0;
    if (m_facts.isWave && chunk.id == ChunkId::kList && chunk.size >= kListTypeSize) {
        uint8_t type[kListTypeSize] = {};
        if (m_walk.Read(type, sizeof type)) m_type = LoadLE32(type);
    }
    return true;
}

// A last pad byte may be missing.
bool SourceChunks::IsWhole() const { return Current().Content() + Current().size <= m_blocks.Size(); }
