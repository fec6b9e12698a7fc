#include "AudioCodec/wave/riff/CWaveLayout.h"

#include <algorithm>

#include "AudioCodec/wave/riff/CFileEdit.h"
#include "riff/WaveFormat.h"

namespace {

constexpr uint64_t kFirstChunk = 12;
constexpr uint64_t kTrailerSize = 128;  // of an old kind of tag that programs hang on to any file
constexpr uint32_t kTrailerMark = FourCC("TAG\0");
constexpr uint32_t kThreeBytes = 0xFFFFFF;

bool IsPrintable(uint32_t id) {
    for (int shift = 0; shift < 32; shift += 8) {
        const uint32_t character = id >> shift & 0xFF;
        if (character < 0x20 || character > 0x7E) return false;
    }
    return true;
}

}  // namespace

bool CWaveLayout::Read(const CFileEdit& file) {
    *this = {};
    m_fileSize = file.Size();
    uint8_t riffSize[4];
    if (m_fileSize < kFirstChunk || !file.Read(4, riffSize, sizeof riffSize)) return false;
    m_riffEnd = uint64_t{LoadLE32(riffSize)} + kChunkHeaderSize;

    m_end = kFirstChunk;
    while (m_end + kChunkHeaderSize <= m_fileSize) {
        WaveChunk chunk;
        if (!ReadChunk(file, m_end, chunk)) return false;
        if (!HasRoom(chunk) && !IsCutShort(file, chunk)) break;
        const bool unknownLength = chunk.id == ChunkId::kData && chunk.declared == 0 && m_formatSeen;
        if (!HasRoom(chunk) || (unknownLength && !ChunksFollow(file, chunk.Content())))
            chunk.size = m_fileSize - chunk.Content();
        if (chunk.IsUnfinishedList() && chunk.End() >= m_fileSize) return m_count != 0;
        Take(chunk);
    }
    m_tail = m_fileSize - std::min(m_fileSize, m_end);
    return m_count != 0;
}

bool CWaveLayout::ReadChunk(const CFileEdit& file, uint64_t offset, WaveChunk& chunk) const {
    uint8_t bytes[kChunkHeaderSize + kListTypeSize] = {};
    if (!file.Read(offset, bytes, std::min<uint64_t>(sizeof bytes, m_fileSize - offset))) return false;
    chunk.offset = offset;
    chunk.id = LoadLE32(bytes);
    chunk.size = chunk.declared = LoadLE32(bytes + 4);
    chunk.type = LoadLE32(bytes + 8);
    return true;
}

void CWaveLayout::Take(const WaveChunk& chunk) {
    if (m_count++ == 0) m_first = chunk;
    if (chunk.id == ChunkId::kData) m_data = chunk;
    m_formatSeen |= chunk.id == ChunkId::kFmt && chunk.declared >= kPcmFormatSize;
    if (chunk.IsList()) m_lists.push_back(chunk.offset);
    m_last = chunk;
    m_end = chunk.End();
}

bool CWaveLayout::LooksLikeTrailer(const WaveChunk& chunk) const {
    return (chunk.id & kThreeBytes) == kTrailerMark && m_fileSize - chunk.offset == kTrailerSize;
}

bool CWaveLayout::IsCutShort(const CFileEdit& file, const WaveChunk& chunk) const {
    if (chunk.id == ChunkId::kData || chunk.id == ChunkId::kJunk || chunk.IsUnfinishedList()) return true;
    if (!IsPrintable(chunk.id) || LooksLikeTrailer(chunk)) return false;
    if (m_riffEnd > kFirstChunk && chunk.offset >= m_riffEnd) return false;
    uint8_t pad = 0;  // another value is the first byte of something that was written without one
    return !(m_last.size & 1) || (file.Read(chunk.offset - 1, &pad, 1) && pad == 0);
}

bool CWaveLayout::ChunksFollow(const CFileEdit& file, uint64_t offset) const {
    const uint64_t start = offset;
    while (offset + kChunkHeaderSize <= m_fileSize) {
        WaveChunk chunk;
        if (!ReadChunk(file, offset, chunk)) return false;
        // What a reader takes, and what an interrupted save left: a list without its id, or filler in front
        // of one that never came.
        if (chunk.id == ChunkId::kFmt || chunk.id == ChunkId::kData || chunk.IsList()) return true;
        if (chunk.IsUnfinishedList() || (chunk.id == ChunkId::kJunk && !HasRoom(chunk))) return true;
        if (LooksLikeTrailer(chunk)) return true;
        if (!IsPrintable(chunk.id) || !HasRoom(chunk)) return false;
        offset = chunk.End();
    }
    return offset >= m_fileSize || offset != start;
}

bool CWaveLayout::IsWritersOwn(const WaveFormat& format) const {
    const uint32_t size = format.DiskSize();
    const bool inFront =
        m_first.id == ChunkId::kFmt && m_first.declared == size && m_data.offset == m_first.Content() + size;
    return inFront && m_tail == 0 && (m_count == 2 || (m_count == 3 && m_last.IsList()));
}
