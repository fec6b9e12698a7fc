#include "capi/chunks/PositionChunks.h"

#include <algorithm>

#include "capi/chunks/ChunkIds.h"

namespace {

using Patch = void (*)(uint8_t* record, const FrameScale& scale);

// A head with a count in it, and so many records.
struct RecordChunk {
    size_t headSize;
    size_t countAt;
    Patch head;
    size_t recordSize;
    Patch record;
};

template <class Change>
void Change32(uint8_t* field, Change&& change) {
    StoreLE32(field, change(LoadLE32(field)));
}

void KeepHead(uint8_t*, const FrameScale&) {}

// In audio of blocks the offset may count from the point's block, which is none of the file's: the position
// tells it from the start.
void PatchCuePoint(uint8_t* point, const FrameScale& scale) {
    uint8_t* const position = point + 4;
    uint8_t* const chunkStart = point + 12;
    uint8_t* const blockStart = point + 16;
    uint8_t* const offset = point + 20;
    if (LoadLE32(blockStart) != 0) StoreLE32(offset, std::max(LoadLE32(position), LoadLE32(offset)));
    Change32(position, [&](uint32_t frame) { return scale.Position(frame); });
    Change32(offset, [&](uint32_t frame) { return scale.Position(frame); });
    StoreLE32(chunkStart, 0);
    StoreLE32(blockStart, 0);
}

void PatchSegment(uint8_t* segment, const FrameScale& scale) {
    Change32(segment + 4, [&](uint32_t frames) { return scale.Length32(frames); });
}

void PatchSamplerHead(uint8_t* head, const FrameScale& scale) {
    constexpr uint32_t kNanoseconds = 1'000'000'000;
    if (!scale.IsSame()) StoreLE32(head + 8, (kNanoseconds + scale.to / 2) / scale.to);  // of a frame
}

// The fraction stays: it is a part of a frame, whatever the rate.
void PatchLoop(uint8_t* loop, const FrameScale& scale) {
    for (uint8_t* const frame : {loop + 8, loop + 12})
        Change32(frame, [&](uint32_t place) { return scale.Position(place); });
}

constexpr RecordChunk kCue = {4, 0, KeepHead, 24, PatchCuePoint};
constexpr RecordChunk kSegments = {4, 0, KeepHead, 12, PatchSegment};
constexpr RecordChunk kLoops = {36, 28, PatchSamplerHead, 24, PatchLoop};

void CopyRecords(const RecordChunk& shape, const CarriedChunk& chunk, ChunkCopy& copy) {
    const FrameScale& scale = chunk.rules.scale;
    const bool moves = !scale.IsSame() || !chunk.rules.isDirect;
    if (!moves || chunk.Size() < shape.headSize) return CopyAsItIs(chunk, copy);
    uint8_t count[4] = {};
    copy.Read(chunk.Place() + shape.countAt, count, sizeof count);
    const uint64_t most = (chunk.Size() - shape.headSize) / shape.recordSize;
    if (scale.IsSame() && LoadLE32(count) > most) return CopyAsItIs(chunk, copy);
    const uint64_t records = std::min<uint64_t>(LoadLE32(count), most);
    const uint64_t changed = shape.headSize + records * shape.recordSize;
    copy.Records(chunk.Place(), 1, shape.headSize, [&](uint8_t* head) { shape.head(head, scale); });
    copy.Records(chunk.Place() + shape.headSize, records, shape.recordSize,
                 [&](uint8_t* record) { shape.record(record, scale); });
    copy.Range(chunk.Place() + changed, chunk.Size() - changed);
}

}  // namespace

void CopyCuePoints(const CarriedChunk& chunk, ChunkCopy& copy) { CopyRecords(kCue, chunk, copy); }
void CopyPlaylist(const CarriedChunk& chunk, ChunkCopy& copy) { CopyRecords(kSegments, chunk, copy); }
void CopySampler(const CarriedChunk& chunk, ChunkCopy& copy) { CopyRecords(kLoops, chunk, copy); }

void CopyLabels(const CarriedChunk& chunk, ChunkCopy& copy) {
    const FrameScale& scale = chunk.rules.scale;
    if (scale.IsSame()) return CopyAsItIs(chunk, copy);
    constexpr uint64_t kLengthEnd = 8;  // in a region: the point's name, and the length
    uint64_t place = chunk.Place() + kListTypeSize;
    const uint64_t end = chunk.Place() + chunk.Size();
    copy.Range(chunk.Place(), kListTypeSize);
    while (end - place >= kChunkHeaderSize) {
        uint8_t header[kChunkHeaderSize] = {};
        copy.Read(place, header, sizeof header);
        copy.Bytes(header, sizeof header);
        place += sizeof header;
        const uint64_t size = LoadLE32(header + 4);
        uint64_t left = std::min(size + (size & 1), end - place);
        if (LoadLE32(header) == kRegion && left >= kLengthEnd && size >= kLengthEnd) {
            copy.Records(place, 1, kLengthEnd, [&](uint8_t* region) {
                Change32(region + 4, [&](uint32_t frames) { return scale.Length32(frames); });
            });
            place += kLengthEnd;
            left -= kLengthEnd;
        }
        copy.Range(place, left);
        place += left;
    }
    copy.Range(place, end - place);
}
