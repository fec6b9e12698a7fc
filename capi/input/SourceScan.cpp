#include "capi/input/SourceScan.h"

#include <algorithm>
#include <iterator>

#include "capi/input/ContainerScan.h"
#include "capi/input/InputSource.h"
#include "riff/WaveTypes.h"

namespace {

constexpr uint32_t kMostChannels = 255;
constexpr uint32_t kMostRate = INT32_MAX;  // of what the module calculates with

struct Container {
    uint32_t id;
    uint32_t type;
    SourceFacts (*scan)(Input& input, ByteSource& source);
};
constexpr Container kContainers[] = {
    {ChunkId::kRiff, ChunkId::kWave, ScanWave},
    {ChunkId::kForm, FourCC("AIFF"), ScanAiff},
    {ChunkId::kForm, ChunkId::kAifc, ScanAiff},
};

// Kinds that people take for one of those that are read.
struct Relative {
    size_t place = 0;  // of its mark
    uint32_t mark = 0;
    const char* name = "";
    uint32_t mask = UINT32_MAX;  // of the mark, which sync words of MPEG audio don't fill
};
constexpr Relative kRelatives[] = {
    {0, FourCC("RF64"), "RF64"},   {0, FourCC("BW64"), "BW64"},   {0, FourCC("RIFX"), "RIFX"},
    {0, FourCC("riff"), "W64"},    {0, FourCC("caff"), "CAF"},    {0, FourCC("fLaC"), "FLAC"},
    {0, FourCC("OggS"), "Ogg"},    {0, FourCC(".snd"), "AU"},     {0, FourCC("wvpk"), "WavPack"},
    {0, FourCC("ID3\x03"), "MP3"}, {0, FourCC("ID3\x04"), "MP3"}, {4, FourCC("ftyp"), "MP4"},
    {0, 0xE2FF, "MP3", 0xE6FF},    {0, 0xF0FF, "AAC", 0xF6FF}};

Failure NotAudio(const Input& input, const uint8_t* header) {
    const FileLabel& label = input.Label();
    for (const Relative& row : kRelatives)
        if ((LoadLE32(header + row.place) & row.mask) == row.mark)
            return {VLW_NOT_AUDIO, label.First() + " is of the kind " + row.name + ", which isn't read.",
                    label.path};
    return {VLW_NOT_AUDIO, label.First() + " is no WAV or AIFF file.", label.path};
}

SourceFacts ScanFrom(Input& input, ByteSource& source) {
    uint8_t header[kFileHeaderSize] = {};
    size_t got = sizeof header;
    if (!source.Read(header, sizeof header)) got = input.ReadWholeAt(0, header, sizeof header);
    const uint32_t id = LoadLE32(header);
    const auto* const container =
        std::find_if(std::begin(kContainers), std::end(kContainers), [&](const Container& row) {
            return row.id == id && (row.type == LoadLE32(header + 8) || got < sizeof header);
        });
    if (container == std::end(kContainers)) throw NotAudio(input, header);
    if (got < sizeof header) throw Damaged(input, "it ends within its first bytes.");
    return container->scan(input, source);
}

// The header comes with the block that the walk begins in, so that an ordinary head is one read.
SourceFacts ScanFromStart(Input& input) {
    if (!input.IsSeekable()) {
        InputInOrder bytes(input);
        return ScanFrom(input, bytes);
    }
    InputBlocks blocks(input);
    return ScanFrom(input, blocks);
}

}  // namespace

void TakeId3(const Input& input, const Chunk& chunk, SourceFacts& facts) {
    if (!facts.id3 && input.IsSeekable() && chunk.Content() + chunk.size <= *input.Size())
        facts.id3 = Extent{chunk.Content(), chunk.size};
}

void TakePassed(const Input& input, uint32_t id, SourceFacts& facts) {
    constexpr size_t kNoted = 100;
    if (!input.IsSeekable() && facts.passed.size() < kNoted) facts.passed.push_back(id);
}

void CountFrames(SourceFacts& facts, int64_t told) {
    const UnitSize& unit = facts.unit;
    if (unit.bytes == 0) {
        if (facts.declaredBytes && told > 0) facts.promised = told;
        if (facts.audioBytes == 0u && facts.declaredBytes == 0u) facts.frames = facts.promised = 0;
        return;
    }
    // Of samples that stand for themselves the size is the truth: what is told beside it is often wrong.
    const auto count = [&](uint64_t bytes) {
        const int64_t stored = unit.FramesIn(bytes);
        return told > 0 && unit.frames != 1 ? std::min(stored, told) : stored;
    };
    if (facts.audioBytes) facts.frames = count(*facts.audioBytes);
    if (facts.declaredBytes) facts.promised = count(*facts.declaredBytes);
}

SourceFacts ScanSource(Input& input) {
    SourceFacts facts = ScanFromStart(input);
    if (facts.channels == 0 || facts.rate == 0 || facts.rate > kMostRate)
        throw Damaged(input, "its head names no channels or no possible rate.");
    if (facts.channels > kMostChannels)
        throw Failure(VLW_UNSUPPORTED,
                      "More than 255 channels aren't read; there are " + std::to_string(facts.channels) + '.',
                      input.Label().path);
    return facts;
}
