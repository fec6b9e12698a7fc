#include "riff/InfoList.h"

#include <algorithm>
#include <array>

#include "riff/TagTable.h"

namespace {

// The ids that tags are made of, each until it is taken. Of a table with more of them than have room, any id.
class TagIdsLeft {
public:
    TagIdsLeft() {
        Add(kTagChunk);
        for (const TagRow& row : TagTable())
            if (row.chunk != 0) Add(row.chunk);
    }
    bool Take(uint32_t id) {
        if (m_count > m_ids.size()) return true;
        const auto end = m_ids.begin() + static_cast<std::ptrdiff_t>(m_count);
        const auto found = std::find(m_ids.begin(), end, id);
        if (found == end) return false;
        *found = m_ids[--m_count];
        return true;
    }

private:
    void Add(uint32_t id) {
        if (m_count < m_ids.size()) m_ids[m_count] = id;
        ++m_count;
    }

    std::array<uint32_t, 32> m_ids = {};
    size_t m_count = 0;
};

}  // namespace

InfoExtent ExtentOfInfoEntry(uint32_t size, uint64_t left) {
    uint64_t stored = uint64_t{size} + (size & 1);
    if (size == left) stored = left;  // some writers leave the last pad byte out of the list
    const auto held = static_cast<uint32_t>(std::min(stored, left));
    return {stored, held, std::min(held, size)};
}

bool WalkInfoList(ChunkWalk& walk, const TakeInfoEntry& take) {
    uint64_t left = walk.Current().size - kListTypeSize;
    while (left > kChunkHeaderSize) {  // a last entry of no bytes is none
        Chunk entry;
        if (!walk.ReadHeader(entry)) return false;
        left -= kChunkHeaderSize;
        const InfoExtent extent = ExtentOfInfoEntry(entry.declared, left);
        // Before memory is taken: the list's size may be a lie. The entry's may be one too, and is no reason
        // to refuse the file: a stream wouldn't know, nor would who has the list alone.
        if (!walk.Source().Holds(extent.held)) return false;
        if (!take(entry.id, extent.held, extent.kept)) return false;
        left -= extent.held;
    }
    return true;
}

bool ReadInfoList(ChunkWalk& walk, InfoChunks& chunks, InfoWanted wanted) {
    chunks.clear();
    static const TagIdsLeft all;  // for a million lists
    TagIdsLeft tags = all;
    const bool whole = WalkInfoList(walk, [&](uint32_t id, uint32_t held, uint32_t kept) {
        if (wanted == InfoWanted::Tags && !tags.Take(id)) return walk.Skip(held);
        return chunks.Append(id, held, kept, [&](char* bytes) { return walk.Read(bytes, held); });
    });
    chunks.Seal();
    return whole;
}

uint64_t InfoEntriesSize(const InfoChunks& chunks) {
    uint64_t size = 0;
    for (const auto& [id, bytes] : chunks) size += kChunkHeaderSize + bytes.size() + (bytes.size() & 1);
    return size;
}
