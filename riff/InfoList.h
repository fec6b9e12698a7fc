// The bytes of an "INFO" list, on their way in and out, for whoever reads or writes one.
#pragma once

#include <cstdint>
#include <functional>

#include "riff/ChunkWalk.h"
#include "riff/InfoChunks.h"

// How far an entry reaches, in bytes after its header.
struct InfoExtent {
    uint64_t stored;  // what its size asks for, with the pad byte
    uint32_t held;    // what the list has of that
    uint32_t kept;    // what of it is the entry's own
};
// Of an entry that declares `size`, where `left` bytes of the list follow its header.
InfoExtent ExtentOfInfoEntry(uint32_t size, uint64_t left);

// Takes an entry whose content the walk stands at: moves over `held` bytes, which are there and of which the
// first `kept` are the entry's own. False ends the list.
using TakeInfoEntry = std::function<bool(uint32_t id, uint32_t held, uint32_t kept)>;

// Walks the entries of the list that the walk stands in, after its type. An entry that reaches past the list
// is cut there, however far. False where the bytes end before the list does.
bool WalkInfoList(ChunkWalk& walk, const TakeInfoEntry& take);

// Which entries are wanted of a list.
enum class InfoWanted {
    All,
    Tags,  // those that tags are made of: of each id in the table of tags the first
};

// Reads them in place of what `chunks` holds. After a failure the entries before it are in. May
// throw bad_alloc.
bool ReadInfoList(ChunkWalk& walk, InfoChunks& chunks, InfoWanted wanted = InfoWanted::All);

// Bytes of the entries with their headers and pad bytes; 0 means that no list is written.
uint64_t InfoEntriesSize(const InfoChunks& chunks);

// The header of a list and its type, in front of so many bytes of entries.
inline void PutInfoHeader(uint8_t (&header)[kChunkHeaderSize + kListTypeSize], uint64_t entries) {
    StoreLE32(header, ChunkId::kList);
    StoreLE32(header + 4, static_cast<uint32_t>(entries + kListTypeSize));
    StoreLE32(header + 8, ChunkId::kInfo);
}

// Hands the list to `put(bytes, count)`, piece by piece and in the order of the ids. Takes no memory. The
// entries are less than 4 GiB together.
template <class Put>
void PutInfoList(const InfoChunks& chunks, Put&& put) {
    uint8_t header[kChunkHeaderSize + kListTypeSize];
    PutInfoHeader(header, InfoEntriesSize(chunks));
    put(header, sizeof header);
    for (const auto& [id, bytes] : chunks) {
        StoreLE32(header, id);
        StoreLE32(header + 4, static_cast<uint32_t>(bytes.size()));
        put(header, kChunkHeaderSize);
        put(bytes.data(), bytes.size());
        if (bytes.size() & 1) put("", 1);
    }
}
