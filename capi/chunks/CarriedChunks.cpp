// A chunk goes through the table: each row of its id makes one chunk of the file, and without a row it is
// carried as it is.
#include "capi/chunks/CarriedChunks.h"

#include <algorithm>
#include <iterator>

#include "capi/chunks/BroadcastChunk.h"
#include "capi/chunks/ChunkIds.h"
#include "capi/chunks/MarkerChunk.h"
#include "capi/chunks/PositionChunks.h"
#include "capi/chunks/SourceChunks.h"
#include "capi/input/ContainerScan.h"

namespace {

struct CarryRow {
    bool isWave;
    uint32_t id;
    uint32_t listType;  // of a list; else 0
    uint32_t made;
    bool isOptional;  // of size 0 there is none
    SizeOfCarried size;
    CopyCarried copy;
};
constexpr CarryRow kRows[] = {
    {true, kBroadcast, 0, kBroadcast, false, SizeOfBroadcast, CopyBroadcast},
    {true, kCuePoints, 0, kCuePoints, false, SameSize, CopyCuePoints},
    {true, kPlaylist, 0, kPlaylist, false, SameSize, CopyPlaylist},
    {true, kSampler, 0, kSampler, false, SameSize, CopySampler},
    {true, ChunkId::kList, kLabels, ChunkId::kList, false, SameSize, CopyLabels},
    {false, kMarkers, 0, kCuePoints, true, SizeOfMarkerPoints, CopyMarkerPoints},
    {false, kMarkers, 0, ChunkId::kList, true, SizeOfMarkerLabels, CopyMarkerLabels},
    {false, kId3OfAiff, 0, kId3, false, SameSize, CopyAsItIs},
};

FrameScale ScaleOf(const SourceFacts& facts, const CarryTarget& target) {
    const auto frames = static_cast<uint64_t>(std::max<int64_t>(facts.frames.value_or(0), 0));
    return {facts.rate, target.rate, target.firstFrame, frames, target.frames};
}

// EBU R 98: coding, sampling frequency, word length, mode, text.
std::string HistoryOf(const SourceFacts& facts, const CarryTarget& target) {
    if (facts.rate == target.rate && facts.channels == target.channels && facts.directBits == target.bits)
        return {};
    const std::string mode = target.channels == 1   ? "mono"
                             : target.channels == 2 ? "stereo"
                                                    : std::to_string(target.channels) + "-channel";
    return "A=PCM,F=" + std::to_string(target.rate) + ",W=" + std::to_string(target.bits) + ",M=" + mode +
           ",T=vlwav\r\n";
}

}  // namespace

CarriedChunks::CarriedChunks(Input& input, const SourceFacts& facts, const CarryTarget& target)
    : m_input(input),
      m_facts(facts),
      m_withTags(target.withTags),
      m_rules{ScaleOf(facts, target), facts.directBits != 0, HistoryOf(facts, target)} {
    const ChunkCopy::Put nothing;
    ChunkCopy copy(input, nothing);
    ForEach(copy, [&](uint32_t, uint64_t size, CopyCarried, const CarriedChunk&) {
        m_bytes += kChunkHeaderSize + size + (size & 1);
    });
}

// Calls `visit(id, size, way, chunk)` for each chunk of the file.
template <class Visit>
void CarriedChunks::ForEach(ChunkCopy& copy, Visit&& visit) const {
    if (!m_input.IsSeekable()) return;
    SourceChunks chunks(m_input, m_facts);
    while (chunks.Next()) {
        const CarriedChunk chunk{chunks.Current(), m_rules};
        if (chunks.Fate() != ChunkFate::Carried || (!m_withTags && IsId3(chunk.source.id))) continue;
        bool isListed = false;
        for (const CarryRow& row : kRows) {
            if (row.isWave != m_facts.isWave || row.id != chunk.source.id ||
                row.listType != chunks.ListType())
                continue;
            isListed = true;
            const uint64_t size = row.size(chunk, copy);
            if (size != 0 || !row.isOptional) visit(row.made, size, row.copy, chunk);
        }
        if (!isListed) visit(chunk.source.id, chunk.Size(), CopyAsItIs, chunk);
    }
}

void CarriedChunks::WriteTo(const ChunkCopy::Put& put) const {
    ChunkCopy copy(m_input, put);
    ForEach(copy, [&](uint32_t id, uint64_t size, CopyCarried way, const CarriedChunk& chunk) {
        copy.Header(id, static_cast<uint32_t>(size));
        way(chunk, copy);
        copy.Pad(size);
    });
}

bool CarriedChunks::AreIn(ByteSource& file, uint64_t place, uint64_t end) const {
    const ChunkCopy::Put nothing;
    ChunkCopy copy(m_input, nothing);
    ChunkWalk walk(file, ByteOrder::Little, place);
    bool areThere = true;
    ForEach(copy, [&](uint32_t id, uint64_t size, CopyCarried, const CarriedChunk&) {
        areThere = areThere && walk.Next() && walk.Current().id == id && walk.Current().size == size;
        place = walk.Current().End();
    });
    return areThere && place == end;
}
