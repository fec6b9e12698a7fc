#include "capi/chunks/MarkerChunk.h"

#include <algorithm>
#include <cstring>

#include "capi/chunks/ChunkIds.h"

namespace {

constexpr uint64_t kCountSize = 2;
constexpr size_t kMarkerHead = 7;  // id, position, and the length of the name
constexpr size_t kNameMost = 255;
constexpr size_t kPointSize = 24;
constexpr size_t kLabelHead = kChunkHeaderSize + 4;

struct Marker {
    uint32_t id;
    uint32_t position;         // in frames
    char name[kNameMost + 1];  // terminated
    size_t nameSize;           // up to its first zero
};

// Calls `take(marker)` for each that is whole.
template <class Take>
void ForEachMarker(const CarriedChunk& chunk, ChunkCopy& copy, Take&& take) {
    if (chunk.Size() < kCountSize) return;
    uint8_t count[kCountSize] = {};
    copy.Read(chunk.Place(), count, sizeof count);
    uint64_t place = chunk.Place() + kCountSize;
    const uint64_t end = chunk.Place() + chunk.Size();
    for (uint32_t left = LoadBE16(count); left != 0 && end - place >= kMarkerHead; --left) {
        uint8_t head[kMarkerHead] = {};
        copy.Read(place, head, sizeof head);
        place += sizeof head;
        const size_t size = head[kMarkerHead - 1];
        if (size > end - place) return;
        Marker marker{LoadBE16(head), LoadBE32(head + 2), {}, 0};
        copy.Read(place, marker.name, size);
        marker.nameSize = std::strlen(marker.name);
        take(marker);
        // The name and its length make an even count.
        place += std::min<uint64_t>(size + ((size + 1) & 1), end - place);
    }
}

// Of a label, with its head and pad byte.
uint64_t StoredSize(const Marker& marker) { return (kLabelHead + marker.nameSize + 1 + 1) & ~uint64_t{1}; }

}  // namespace

uint64_t SizeOfMarkerPoints(const CarriedChunk& chunk, ChunkCopy& copy) {
    uint64_t count = 0;
    ForEachMarker(chunk, copy, [&](const Marker&) { ++count; });
    return count == 0 ? 0 : 4 + count * kPointSize;
}

void CopyMarkerPoints(const CarriedChunk& chunk, ChunkCopy& copy) {
    uint8_t count[4] = {};
    StoreLE32(count, static_cast<uint32_t>((SizeOfMarkerPoints(chunk, copy) - 4) / kPointSize));
    copy.Bytes(count, sizeof count);
    ForEachMarker(chunk, copy, [&](const Marker& marker) {
        const uint32_t frame = chunk.rules.scale.Position(marker.position);
        uint8_t point[kPointSize] = {};
        StoreLE32(point, marker.id);
        StoreLE32(point + 4, frame);
        StoreLE32(point + 8, ChunkId::kData);
        StoreLE32(point + 20, frame);
        copy.Bytes(point, sizeof point);
    });
}

uint64_t SizeOfMarkerLabels(const CarriedChunk& chunk, ChunkCopy& copy) {
    uint64_t size = 0;
    ForEachMarker(chunk, copy,
                  [&](const Marker& marker) { size += marker.nameSize == 0 ? 0 : StoredSize(marker); });
    return size == 0 ? 0 : kListTypeSize + size;
}

void CopyMarkerLabels(const CarriedChunk& chunk, ChunkCopy& copy) {
    uint8_t number[4] = {};
    StoreLE32(number, kLabels);
    copy.Bytes(number, sizeof number);
    ForEachMarker(chunk, copy, [&](const Marker& marker) {
        if (marker.nameSize == 0) return;
        const size_t size = sizeof number + marker.nameSize + 1;
        copy.Header(kLabel, static_cast<uint32_t>(size));
        StoreLE32(number, marker.id);
        copy.Bytes(number, sizeof number);
        copy.Bytes(marker.name, marker.nameSize + 1);
        copy.Pad(size);
    });
}
