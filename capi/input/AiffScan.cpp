// AIFF and AIFC: "COMM" tells the format, "SSND" has the audio after an offset of its own.
#include <algorithm>
#include <iterator>

#include "capi/input/ContainerScan.h"
#include "capi/input/InputSource.h"
#include "riff/ChunkWalk.h"

namespace {

constexpr uint32_t kSound = FourCC("SSND");
constexpr size_t kCommonSize = 18;  // of "COMM"; in AIFC the codec's tag follows
constexpr size_t kCodecTagSize = 4;
constexpr uint32_t kCommonMost = 1024;    // with the codec's name
constexpr uint32_t kSoundHead = 8;        // offset and block size
constexpr uint32_t kUntold = 0xFFFFFFFF;  // as a size, by programs that write to a pipe
constexpr uint32_t kTextMost = 1u << 20;
constexpr uint32_t kExtendedBias = 16383 + 63;  // of an 80-bit number whose mantissa is a whole one

struct AiffCodec {
    uint32_t tag;
    const char* name;
    uint32_t bits;        // of a stored sample; 0: as "COMM" has it
    uint32_t unitBytes;   // for each channel; 0: those of a sample
    uint32_t unitFrames;  // 0: only decoding tells
};
constexpr AiffCodec kCodecs[] = {
    {FourCC("NONE"), "PCM", 0, 0, 1},         {FourCC("none"), "PCM", 0, 0, 1},
    {FourCC("twos"), "PCM", 0, 0, 1},         {FourCC("sowt"), "PCM", 0, 0, 1},
    {FourCC("raw "), "PCM", 8, 1, 1},         {FourCC("in24"), "PCM", 24, 3, 1},
    {FourCC("in32"), "PCM", 32, 4, 1},        {FourCC("42n1"), "PCM", 24, 3, 1},
    {FourCC("23ni"), "PCM", 32, 4, 1},        {FourCC("fl32"), "IEEE float", 32, 4, 1},
    {FourCC("FL32"), "IEEE float", 32, 4, 1}, {FourCC("fl64"), "IEEE float", 64, 8, 1},
    {FourCC("FL64"), "IEEE float", 64, 8, 1}, {FourCC("alaw"), "A-law", 8, 1, 1},
    {FourCC("ALAW"), "A-law", 8, 1, 1},       {FourCC("ulaw"), "mu-law", 8, 1, 1},
    {FourCC("ULAW"), "mu-law", 8, 1, 1},      {FourCC("ima4"), "IMA ADPCM", 4, 34, 64},
    {FourCC("GSM "), "GSM 6.10", 0, 0, 0},    {FourCC("MAC3"), "MACE 3:1", 0, 0, 0},
    {FourCC("MAC6"), "MACE 6:1", 0, 0, 0},    {FourCC("QDMC"), "QDesign", 0, 0, 0},
    {FourCC("QDM2"), "QDesign 2", 0, 0, 0},
};
constexpr AiffCodec kUnknown = {0, "unknown", 0, 0, 0};

const AiffCodec& FindCodec(uint32_t tag) {
    const auto* const row = std::find_if(std::begin(kCodecs), std::end(kCodecs),
                                         [&](const AiffCodec& codec) { return codec.tag == tag; });
    return row == std::end(kCodecs) ? kUnknown : *row;
}

struct TextRow {
    uint32_t id;
    const char* keyword;
};
constexpr TextRow kTexts[] = {{FourCC("NAME"), "title"},
                              {FourCC("AUTH"), "artist"},
                              {FourCC("(c) "), "copyright"},
                              {FourCC("ANNO"), "comment"}};

// A rate is an 80-bit number: sign and exponent in 2 bytes, then the mantissa in 8 (IEEE 754, extended).
uint32_t RateOf(const uint8_t* bytes) {
    const uint32_t exponent = LoadBE16(bytes);
    const uint32_t shift = kExtendedBias - std::min(exponent, kExtendedBias);
    const uint64_t rate = shift < 64 ? LoadBE64(bytes + 2) >> shift : 0;
    return static_cast<uint32_t>(std::min<uint64_t>(rate, UINT32_MAX));
}

class AiffScanner {
public:
    explicit AiffScanner(Input& input) : m_input(input) {}

    SourceFacts Run(ByteSource& source) {
        uint8_t header[kFileHeaderSize];
        m_input.ReadWholeAt(0, header, sizeof header);
        m_isAifc = LoadLE32(header + 8) == ChunkId::kAifc;
        m_facts.container = "AIFF";
        Walk(source);
        if (m_common.empty()) throw Damaged(m_input, "it has no format.");
        if (!m_hasSound) throw Damaged(m_input, "it has no audio.");
        Describe();
        PutHead();
        return std::move(m_facts);
    }

private:
    void Walk(ByteSource& source) {
        ChunkWalk walk(source, ByteOrder::Big, kFileHeaderSize);
        while (walk.Next()) {
            const Chunk& chunk = walk.Current();
            bool whole = true;
            if (chunk.id == ChunkId::kCommon && chunk.size >= kCommonSize) whole = TakeCommon(walk);
            if (chunk.id == kSound) {
                whole = TakeSound(walk);
                // In order the audio must be read from here; and after a size that isn't told nothing is
                // known.
                if (!m_input.IsSeekable() || !m_soundBytes) return;
            }
            if (IsId3(chunk.id)) TakeId3(m_input, chunk, m_facts);
            TakePassed(m_input, chunk.id, m_facts);
            for (const TextRow& row : kTexts)
                if (chunk.id == row.id && chunk.size <= kTextMost && !HasText(row.keyword))
                    whole = TakeText(walk, row.keyword);
            if (!whole) return;
        }
    }

    bool TakeCommon(ChunkWalk& walk) {
        m_common.resize(std::min<uint64_t>(walk.Current().size, kCommonMost));
        if (walk.Read(m_common.data(), m_common.size())) return true;
        m_common.clear();
        return false;
    }

    bool TakeSound(ChunkWalk& walk) {
        uint8_t head[kSoundHead];
        if (!walk.Read(head, sizeof head)) return false;
        const uint64_t offset = LoadBE32(head);
        m_hasSound = true;
        m_facts.audioPlace = walk.Current().Content() + kSoundHead + offset;
        const uint64_t size = walk.Current().size;
        if (size >= kSoundHead && size != kUntold)
            m_soundBytes = size - kSoundHead - std::min(size - kSoundHead, offset);
        else
            m_soundBytes.reset();
        return true;
    }

    // Of several of a kind the first that says something.
    bool HasText(const char* keyword) const {
        return std::any_of(m_facts.texts.begin(), m_facts.texts.end(),
                           [&](const auto& text) { return text.first == keyword; });
    }
    bool TakeText(ChunkWalk& walk, const char* keyword) {
        std::string text(walk.Current().size, '\0');
        if (!walk.Read(text.data(), text.size())) return false;
        text.resize(std::min(text.find('\0'), text.size()));
        if (!text.empty()) m_facts.texts.emplace_back(keyword, std::move(text));
        return true;
    }

    void Describe() {
        const uint8_t* const common = m_common.data();
        const bool tagged = m_isAifc && m_common.size() >= kCommonSize + kCodecTagSize;
        const AiffCodec& codec = FindCodec(tagged ? LoadLE32(common + kCommonSize) : FourCC("NONE"));
        m_facts.codec = codec.name;
        m_facts.channels = LoadBE16(common);
        m_facts.bits = codec.bits != 0 ? codec.bits : codec.unitFrames == 1 ? LoadBE16(common + 6) : 0;
        m_facts.rate = RateOf(common + 8);
        const uint32_t sample = codec.unitBytes != 0 ? codec.unitBytes : (m_facts.bits + 7) / 8;
        if (codec.unitFrames != 0) m_facts.blockBytes = sample * m_facts.channels;
        if (m_facts.blockBytes != 0 && IsDecoded(codec)) {
            m_facts.unit.bytes = m_facts.blockBytes;
            m_facts.unit.frames = codec.unitFrames;
            m_facts.unit.standsAlone = codec.unitFrames == 1;
        }
        Measure(LoadBE32(common + 2), codec.unitFrames);
    }

    // Of other forms only the decoders can tell whether they take them.
    bool IsDecoded(const AiffCodec& codec) const {
        if (codec.unitFrames > 1) return m_facts.channels <= 2;
        return codec.bits == 64 || LoadBE16(m_common.data() + 6) <= 32;
    }

    // "COMM" counts units. Programs that write to a pipe leave both sizes 0, or out of all bounds.
    void Measure(uint32_t units, uint32_t unitFrames) {
        const bool told = (units != 0 || m_soundBytes == 0u) && !IsOutOfBounds(units);
        if (told && m_facts.unit.bytes != 0)
            m_facts.declaredBytes = uint64_t{units} * m_facts.unit.bytes;
        else if (told)
            m_facts.declaredBytes = m_soundBytes;
        // Nor may a decoder believe it.
        if (!told) StoreBE32(&m_common[2], 0);
        if (m_input.IsSeekable()) {
            const uint64_t left = *m_input.Size() - std::min(*m_input.Size(), m_facts.audioPlace);
            m_facts.audioBytes = std::min(left, m_facts.declaredBytes.value_or(left));
            // The chunk ends it too, where its size can be true.
            if (told && m_soundBytes) m_facts.audioBytes = std::min(*m_facts.audioBytes, *m_soundBytes);
        }
        CountFrames(m_facts, int64_t{units} * std::max(unitFrames, 1u));
    }

    // Some count units up to the bound, others bytes, cut down to whole frames.
    bool IsOutOfBounds(uint32_t units) const {
        constexpr uint32_t kBound = 0x7F000000;
        constexpr uint32_t kCutMost = 255;
        const uint64_t bytes = uint64_t{units} * std::max(m_facts.unit.bytes, 1u);
        const bool isTrue = m_input.IsSeekable() && *m_input.Size() >= m_facts.audioPlace + bytes;
        return units >= kBound || (bytes <= kBound && bytes > kBound - kCutMost && !isTrue);
    }

    void PutHead() {
        // With the version that all files of this kind name, since decoders may want one.
        constexpr uint8_t kVersionChunk[] = {'F', 'V', 'E', 'R', 0, 0, 0, 4, 0xA2, 0x80, 0x51, 0x40};
        std::vector<uint8_t>& head = m_facts.head;
        head.resize(kFileHeaderSize);
        StoreLE32(head.data(), ChunkId::kForm);
        StoreLE32(head.data() + 8, m_isAifc ? ChunkId::kAifc : FourCC("AIFF"));
        if (m_isAifc) head.insert(head.end(), std::begin(kVersionChunk), std::end(kVersionChunk));
        AppendHeader(ChunkId::kCommon, static_cast<uint32_t>(m_common.size()));
        head.insert(head.end(), m_common.begin(), m_common.end());
        if (m_common.size() & 1) head.push_back(0);
        AppendHeader(kSound, 0);
        head.insert(head.end(), kSoundHead, 0);
    }

    void AppendHeader(uint32_t id, uint32_t size) {
        uint8_t header[kChunkHeaderSize];
        StoreLE32(header, id);
        StoreBE32(header + 4, size);
        m_facts.head.insert(m_facts.head.end(), std::begin(header), std::end(header));
    }

    Input& m_input;
    bool m_isAifc = false;
    std::vector<uint8_t> m_common;
    bool m_hasSound = false;
    std::optional<uint64_t> m_soundBytes;  // as declared, after the offset; nothing where that can't be true
    SourceFacts m_facts;
};

}  // namespace

SourceFacts ScanAiff(Input& input, ByteSource& source) { return AiffScanner(input).Run(source); }
