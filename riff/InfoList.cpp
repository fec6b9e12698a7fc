#include "riff/InfoList.h"

#include <algorithm>

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
