// The walk, chunk by chunk: (1) take the header, (2) judge whether it is one, or the tail begins here, (3)
// set a size that lies right, (4) end at the list that an interrupted save left, (5) take the chunk over.
// Invariant: m_end is the end of the last chunk taken over, and everything in front of it is chunks.
#include "AudioCodec/wave/riff/CWaveLayout.h"

#include <algorithm>

#include "AudioCodec/wave/riff/HandleSource.h"
#include "riff/ChunkWalk.h"
#include "riff/WaveFormat.h"

namespace {

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

bool CWaveLayout::Read(HANDLE handle) {
    *this = {};
    HandleSource file(handle);
    // Whatever was judged by bytes that couldn't be read, audio of unknown length for one, may be wrong.
    return Walk(file) && !file.HasFailed();
}

bool CWaveLayout::Walk(BlockSource& file) {
    m_fileSize = file.Size();
    uint8_t header[kFileHeaderSize];
    if (!file.Read(header, sizeof header)) return false;
    m_riffEnd = uint64_t{LoadLE32(header + 4)} + kChunkHeaderSize;

    m_end = kFileHeaderSize;
    ChunkWalk walk(file, ByteOrder::Little, m_end);
    while (m_end + kChunkHeaderSize <= m_fileSize) {
        // (1) Room for a header is there, so one that can't be read is a failure and not the end.
        WaveChunk chunk;
        if (!walk.Next() || !Look(file, walk, chunk))
            return false;  // there are bytes, but they can't be read
        // (2) A header that declares too much is either a chunk cut short or bytes that were never a header.
        if (!HasRoom(chunk) && !IsCutShort(file, chunk)) break;
        // (3) A size of 0 is what a writer leaves that was killed or wrote into a pipe: its audio goes
        // to the end.
        const bool unknownLength = chunk.id == ChunkId::kData && chunk.declared == 0 && m_formatSeen;
        if (!HasRoom(chunk) || (unknownLength && !ChunksFollow(file, chunk.Content())))
            chunk.size = m_fileSize - chunk.Content();
        walk.SetSize(chunk.size);
        // (4) At the very end alone: further in front something was put after it, which must stay reachable.
        if (chunk.IsUnfinishedList() && chunk.End() >= m_fileSize) return m_count != 0;
        // (5) Both sizes are known now; m_last is the only chunk in which they can differ.
        Take(chunk);
    }
    m_tail = m_fileSize - std::min(m_fileSize, m_end);
    return m_count != 0;
}

// The chunk that the walk came to, with the bytes that its content begins with, as far as the file has them.
// False where they can't be read.
bool CWaveLayout::Look(BlockSource& file, const ChunkWalk& walk, WaveChunk& chunk) {
    static_cast<Chunk&>(chunk) = walk.Current();
    uint8_t type[kListTypeSize] = {};
    const uint64_t there = std::min<uint64_t>(sizeof type, file.Size() - file.Place());
    if (file.Peek(type, sizeof type) < there) return false;
    chunk.type = LoadLE32(type);
    return true;
}

void CWaveLayout::Take(const WaveChunk& chunk) {
    if (m_count++ == 0) m_first = chunk;
    // The last one wins, and so it does in the reader.
    if (chunk.id == ChunkId::kData) m_data = chunk;
    // Of the least size only: the reader passes over a smaller one.
    m_formatSeen |= chunk.id == ChunkId::kFmt && chunk.declared >= kPcmFormatSize;
    if (chunk.IsList()) m_lists.push_back(chunk.offset);
    m_last = chunk;
    m_end = chunk.End();
}

bool CWaveLayout::LooksLikeTrailer(const WaveChunk& chunk) const {
    return (chunk.id & kThreeBytes) == kTrailerMark && m_fileSize - chunk.offset == kTrailerSize;
}

// Ids that writers and interrupted saves leave unfinished are believed at once. Of all others each line below
// is one sign that the bytes are no header.
bool CWaveLayout::IsCutShort(BlockSource& file, const WaveChunk& chunk) const {
    if (chunk.id == ChunkId::kData || chunk.id == ChunkId::kJunk || chunk.IsUnfinishedList()) return true;
    if (!IsPrintable(chunk.id) || LooksLikeTrailer(chunk)) return false;
    if (m_riffEnd > kFileHeaderSize && chunk.offset >= m_riffEnd) return false;
    if (!(m_last.size & 1)) return true;
    uint8_t pad = 0;  // another value is the first byte of something that was written without one
    const uint64_t place = file.Place();
    file.MoveTo(chunk.offset - 1);
    const bool isPad = file.Read(&pad, 1) && pad == 0;
    file.MoveTo(place);
    return isPad;
}

bool CWaveLayout::ChunksFollow(BlockSource& file, uint64_t offset) const {
    const uint64_t place = file.Place();
    file.MoveTo(offset);
    const bool follow = ChunksStandAt(file, offset);
    file.MoveTo(place);
    return follow;
}

bool CWaveLayout::ChunksStandAt(BlockSource& file, uint64_t offset) const {
    ChunkWalk walk(file, ByteOrder::Little, offset);
    uint64_t end = offset;
    while (end + kChunkHeaderSize <= m_fileSize) {
        WaveChunk chunk;
        if (!walk.Next() || !Look(file, walk, chunk)) return false;
        // What a reader takes, and what an interrupted save left: a list without its id, or filler before one
        // that never came.
        if (chunk.id == ChunkId::kFmt || chunk.id == ChunkId::kData || chunk.IsList()) return true;
        if (chunk.IsUnfinishedList() || (chunk.id == ChunkId::kJunk && !HasRoom(chunk))) return true;
        if (LooksLikeTrailer(chunk)) return true;
        if (!IsPrintable(chunk.id) || !HasRoom(chunk)) return false;
        end = chunk.End();
    }
    // Nothing at all follows: the chunk is empty and ends the file. Fewer bytes than a header after a chunk
    // are a tail of their own; fewer right at the start are audio.
    return end >= m_fileSize || end != offset;
}

bool CWaveLayout::IsWritersOwn(const WaveFormat& format) const {
    // "fmt " first and of the size that would be written, "data" right after it: rewriting the
    // format moves nothing.
    const uint32_t size = format.DiskSize();
    const bool inFront =
        m_first.id == ChunkId::kFmt && m_first.declared == size && m_data.offset == m_first.Content() + size;
    return inFront && m_tail == 0 && (m_count == 2 || (m_count == 3 && m_last.IsList()));
}
