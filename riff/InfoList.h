// The bytes of an "INFO" list, as every way of writing one puts them.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "riff/WaveTypes.h"

// Sub-chunks of the "INFO" list: id as a little-endian number, and the bytes that its size field declares.
using InfoChunks = std::map<uint32_t, std::string>;

// Bytes of the sub-chunks with their headers and pad bytes; 0 means that no list is written.
inline uint64_t InfoEntriesSize(const InfoChunks& chunks) {
    uint64_t size = 0;
    for (const auto& [id, value] : chunks) size += kChunkHeaderSize + value.size() + (value.size() & 1);
    return size;
}

// Hands the list to `put(bytes, count)`, piece by piece and in the map's order. Takes no memory. The
// sub-chunks are less than 4 GiB together.
template <class Put>
void PutInfoList(const InfoChunks& chunks, Put&& put) {
    uint8_t header[kChunkHeaderSize + kListTypeSize];
    StoreLE32(header, ChunkId::kList);
    StoreLE32(header + 4, static_cast<uint32_t>(InfoEntriesSize(chunks)) + kListTypeSize);
    StoreLE32(header + 8, ChunkId::kInfo);
    put(header, sizeof header);
    for (const auto& [id, value] : chunks) {
        StoreLE32(header, id);
        StoreLE32(header + 4, static_cast<uint32_t>(value.size()));
        put(header, kChunkHeaderSize);
        put(value.data(), value.size());
        if (value.size() & 1) put("", 1);
    }
}
