// (1) The walk takes format, list, fact and audio. Of an input that can be moved in it goes on after the
// audio, so that of several lists and audio chunks the last counts, as for the module. (2) What the size of
// the audio is: told, not told, or more than there is. (3) The frames that follow.
#include <algorithm>
#include <optional>

#include "capi/input/ContainerScan.h"
#include "capi/input/InputSource.h"
#include "capi/input/WaveCodecs.h"
#include "riff/ChunkWalk.h"

namespace {

// As a size, by programs that write to a pipe. The second is cut down to whole frames, which are 255 bytes at
// the most.
constexpr uint32_t kNotTold = 0xFFFFFFFF;
constexpr uint32_t kNotToldEither = 0x7FFFF000;
constexpr uint32_t kCutMost = 255;
constexpr uint32_t kHeldListMost = 64u << 20;
constexpr size_t kListPiece = 65536;

struct WaveChunks {
    std::optional<WaveFormat> format;
    std::vector<uint8_t> record;  // as it stands in the file
    std::optional<Chunk> data;
    int64_t told = 0;  // frames, by "fact"
};

class WaveScanner {
public:
    explicit WaveScanner(Input& input) : m_input(input) {}

    SourceFacts Run(ByteSource& source) {
        Walk(source);
        if (!m_chunks.format) throw Damaged(m_input, "it has no format.");
        if (!m_chunks.data) throw Damaged(m_input, "it has no audio.");
        DescribeFormat();
        MeasureAudio();
        return std::move(m_facts);
    }

private:
    void Walk(ByteSource& source) {
        ChunkWalk walk(source, ByteOrder::Little, kFileHeaderSize);
        while (walk.Next()) {
            const Chunk& chunk = walk.Current();
            bool whole = true;
            if (chunk.id == ChunkId::kFmt && chunk.size >= kPcmFormatSize) whole = TakeFormat(walk);
            if (chunk.id == ChunkId::kFact && chunk.size >= kFactSampleCountSize) whole = TakeFact(walk);
            if (chunk.id == ChunkId::kList && chunk.size >= kListTypeSize) whole = TakeList(walk);
            if (IsId3(chunk.id)) TakeId3(m_input, chunk, m_facts);
            if (chunk.id != ChunkId::kList) TakePassed(m_input, chunk.id, m_facts);
            if (chunk.id == ChunkId::kData) {
                m_chunks.data = chunk;
                // In order the audio must be read from here; and after a size that isn't told nothing is
                // known.
                if (!m_input.IsSeekable() || IsNotTold(chunk)) return;
            }
            if (!whole) return;
        }
    }

    bool TakeFormat(ChunkWalk& walk) {
        const auto kept = static_cast<uint32_t>(
            std::min<uint64_t>(walk.Current().size, kFormatFixedSize + kFormatExtraMost));
        m_chunks.record.resize(kept);
        if (!walk.Read(m_chunks.record.data(), kept)) return false;
        m_chunks.format = WaveFormat::Load(m_chunks.record.data(), kept);
        return true;
    }

    bool TakeFact(ChunkWalk& walk) {
        uint8_t count[kFactSampleCountSize];
        if (!walk.Read(count, sizeof count)) return false;
        m_chunks.told = LoadLE32(count) == kNotTold ? 0 : LoadLE32(count);
        return true;
    }

    bool TakeList(ChunkWalk& walk) {
        uint8_t type[kListTypeSize];
        if (!walk.Read(type, sizeof type)) return false;
        if (LoadLE32(type) != ChunkId::kInfo) {
            TakePassed(m_input, LoadLE32(type), m_facts);
            return true;
        }
        const uint64_t size = walk.Current().size - kListTypeSize;
        m_facts.infoList = Extent{walk.Current().Content() + kListTypeSize, size};
        if (m_input.IsSeekable()) return true;
        if (size > kHeldListMost) throw Damaged(m_input, "its tags take more than 64 MiB.");
        return HoldList(walk, size);
    }

    // As it comes: a few bytes can promise all of it.
    bool HoldList(ChunkWalk& walk, uint64_t size) {
        std::vector<uint8_t>& entries = m_facts.infoEntries;
        for (entries.clear(); entries.size() < size;) {
            const size_t there = entries.size();
            const auto piece = static_cast<size_t>(std::min<uint64_t>(size - there, kListPiece));
            entries.resize(there + piece);
            if (!walk.Read(&entries[there], piece)) return false;
        }
        return true;
    }

    // (2) 0 is a size too: nothing is there, or a chain of chunks follows that ends where the file does.
    bool IsNotTold(const Chunk& data) {
        if (data.declared == kNotTold) return true;
        if (data.declared <= kNotToldEither && data.declared > kNotToldEither - kCutMost)
            return !m_input.IsSeekable() || *m_input.Size() < data.Content() + data.declared;
        if (data.declared != 0) return false;
        if (m_input.IsSeekable()) return *m_input.Size() > data.Content() && !ChunksFollow(data.Content());
        uint8_t id[4];
        if (m_input.ReadWholeAt(data.Content(), id, sizeof id) == 0) return false;
        return !std::all_of(std::begin(id), std::end(id), [](uint8_t c) { return c >= 0x20 && c < 0x7F; });
    }

    bool ChunksFollow(uint64_t place) {
        // The walk itself goes along the chain that it found, so what follows later is a part of it.
        if (m_chainSeen) return true;
        InputBlocks blocks(m_input);
        blocks.MoveTo(place);
        ChunkWalk walk(blocks, ByteOrder::Little, place);
        uint64_t end = place;
        while (walk.Next()) end = walk.Current().End();
        // A last pad byte may be missing.
        m_chainSeen = end == *m_input.Size() || (end == *m_input.Size() + 1 && walk.Current().size % 2 == 1);
        return m_chainSeen;
    }

    void DescribeFormat() {
        const WaveFormat& format = *m_chunks.format;
        const WaveShape shape = ShapeOf(format);
        const WaveCodec& codec = FindWaveCodec(shape.tag);
        m_facts.container = "WAV";
        m_facts.isWave = true;
        m_facts.codec = codec.name;
        m_facts.codecTag = shape.tag;
        m_facts.channelMask = shape.channelMask;
        m_facts.rate = format.samplesPerSec;
        m_facts.channels = format.channels;
        m_facts.bits = codec.hasBits ? format.bitsPerSample : 0;
        m_facts.blockBytes = format.blockAlign;
        const WaveFormat plain = WaveFormat::Pcm(format.channels, format.samplesPerSec, format.bitsPerSample);
        if (shape.tag == kFormatTagPcm && plain.IsDirectPcm()) {
            // A frame is what channels and bits make it, whatever the record tells.
            m_facts.directBits = format.bitsPerSample;
            m_facts.blockBytes = plain.blockAlign;
            m_chunks.format = plain;
            m_chunks.record.resize(kFormatFixedSize);
            plain.StoreFixed(m_chunks.record.data());
            m_chunks.record.resize(kPcmFormatSize);
        }
        if (codec.unit) m_facts.unit = codec.unit(*m_chunks.format);
        PutHead();
    }

    void PutHead() {
        std::vector<uint8_t>& head = m_facts.head;
        const auto size = static_cast<uint32_t>(m_chunks.record.size());
        head.resize(kFileHeaderSize + kChunkHeaderSize + size + (size & 1) + kChunkHeaderSize);
        StoreLE32(head.data(), ChunkId::kRiff);
        StoreLE32(head.data() + 8, ChunkId::kWave);
        StoreLE32(head.data() + 12, ChunkId::kFmt);
        StoreLE32(head.data() + 16, size);
        std::copy(m_chunks.record.begin(), m_chunks.record.end(), head.begin() + 20);
        StoreLE32(head.data() + head.size() - kChunkHeaderSize, ChunkId::kData);
    }

    // (2), (3)
    void MeasureAudio() {
        const Chunk& data = *m_chunks.data;
        m_facts.audioPlace = data.Content();
        if (!IsNotTold(data)) m_facts.declaredBytes = data.declared;
        if (m_input.IsSeekable()) {
            const uint64_t left = *m_input.Size() - std::min(*m_input.Size(), data.Content());
            m_facts.audioBytes = std::min(left, m_facts.declaredBytes.value_or(left));
        }
        CountFrames(m_facts, m_chunks.told);
    }

    Input& m_input;
    bool m_chainSeen = false;  // from some audio of size 0 to the end of the file
    WaveChunks m_chunks;
    SourceFacts m_facts;
};

}  // namespace

SourceFacts ScanWave(Input& input, ByteSource& source) { return WaveScanner(input).Run(source); }
