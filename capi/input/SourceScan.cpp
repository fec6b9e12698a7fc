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
    uint32_t id;
    const char* name;
};
constexpr Relative kRelatives[] = {
    {FourCC("RF64"), "RF64"},   {FourCC("BW64"), "BW64"},  {FourCC("RIFX"), "RIFX"},
    {FourCC("riff"), "W64"},    {FourCC("caff"), "CAF"},   {FourCC("fLaC"), "FLAC"},
    {FourCC("OggS"), "Ogg"},    {FourCC(".snd"), "AU"},    {FourCC("wvpk"), "WavPack"},
    {FourCC("ID3\x03"), "MP3"}, {FourCC("ID3\x04"), "MP3"}};

Failure NotAudio(const Input& input, uint32_t id) {
    const std::string name = input.Name().empty() ? "The source" : input.Name();
    for (const Relative& row : kRelatives)
        if (row.id == id)
            return {VLW_NOT_AUDIO, name + " is of the kind " + row.name + ", which isn't read.",
                    input.Name()};
    return {VLW_NOT_AUDIO, name + " is no WAV or AIFF file.", input.Name()};
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
    if (container == std::end(kContainers)) throw NotAudio(input, id);
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
                      input.Name());
    return facts;
}
