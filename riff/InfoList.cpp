#include "riff/InfoList.h"

#include <algorithm>

bool WalkInfoList(ChunkWalk& walk, const TakeInfoEntry& take) {
    uint64_t left = walk.Current().size - kListTypeSize;
    while (left > kChunkHeaderSize) {  // a last entry of no bytes is none
        Chunk entry;
        if (!walk.ReadHeader(entry)) return false;
        left -= kChunkHeaderSize;
        uint64_t stored = entry.size + (entry.size & 1);
        if (entry.size == left) stored = left;  // some writers leave the last pad byte out of the list
        // Before memory is taken: the size may be a lie.
        if (!walk.Source().Holds(stored)) return false;
        const auto held = static_cast<uint32_t>(std::min(stored, left));
        const auto kept = static_cast<uint32_t>(std::min<uint64_t>(held, entry.size));
        if (!take(entry.id, held, kept)) return false;
        left -= held;
    }
    return true;
}

bool ReadInfoList(ChunkWalk& walk, InfoChunks& chunks) {
    chunks.clear();
    const bool whole = WalkInfoList(walk, [&](uint32_t id, uint32_t held, uint32_t kept) {
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
