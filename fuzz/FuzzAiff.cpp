// The C library over any bytes in memory: the scans of AIFF and WAV, whose facts have to agree with one
// another, the chunks that a conversion carries, which come out at the size that was foretold, and a reader,
// in which a frame is the same however it is come by.
#include "capi/Failure.h"
#include "capi/chunks/CarriedChunks.h"
#include "capi/handles/Id3Frames.h"
#include "capi/input/MemoryInput.h"
#include "capi/input/SourceScan.h"
#include "capi/vlwav_more.h"
#include "fuzz/ScriptBytes.h"
#include "riff/SpanSource.h"

namespace {

// The same bytes, but of unknown size.
class MemoryInOrder final : public Input {
public:
    explicit MemoryInOrder(const std::vector<uint8_t>& bytes)
        : Input({}, {}), m_bytes(bytes.data(), bytes.size()) {}

private:
    size_t Get(uint64_t place, void* buffer, size_t count) override {
        return m_bytes.ReadAt(place, buffer, count);
    }
    MemoryInput m_bytes;
};

void Carry(Input& input, const SourceFacts& facts, uint64_t size) {
    for (const uint32_t rate : {facts.rate, 44100u}) {
        const CarriedChunks chunks(input, facts, {rate, 1, 16, 1, 1000});
        std::vector<uint8_t> made;
        chunks.WriteTo([&](const void* bytes, size_t count) {
            const auto* const from = static_cast<const uint8_t*>(bytes);
            made.insert(made.end(), from, from + count);
        });
        Check(made.size() == chunks.Bytes(), "chunks have the size that was told");
        SpanSource written(made);
        Check(chunks.AreIn(written, 0, made.size()), "chunks are found where they were put");
    }
    if (!facts.id3) return;
    InputBlocks blocks(input);
    Check(FramesOfUse(blocks, *facts.id3).size() <= size, "a tag doesn't grow");
}

void Scan(Input& input, uint64_t size) {
    try {
        const SourceFacts facts = ScanSource(input);
        Check(facts.channels != 0 && facts.rate != 0, "what is read has channels and a rate");
        Check(facts.frames.value_or(0) >= 0 && facts.promised.value_or(0) >= 0, "no length is negative");
        Check(!facts.frames || !facts.promised || *facts.frames <= *facts.promised,
              "no more is there than is promised");
        Check(!input.IsSeekable() || *facts.audioBytes <= size, "no more audio is there than bytes");
        Check(facts.head.size() < 70000 && facts.infoEntries.size() <= size, "little is kept");
        Carry(input, facts, size);
    } catch (const Failure& failure) {
        Check(failure.Code() < 0 && *failure.what() != 0, "a failure has a sentence");
    }
}

constexpr size_t kFrames = 20000;

// Up to kFrames frames from where the reader stands.
std::vector<int16_t> Frames(vlw_reader* reader, size_t count, vlw_code& code) {
    std::vector<int16_t> frames(count * vlw_reader_channels(reader));
    size_t done = 0;
    code = vlw_reader_read_int16(reader, frames.data(), count, &done);
    Check((code == VLW_OK) == (done == count), "all frames come, or the reason why not");
    frames.resize(done * vlw_reader_channels(reader));
    return frames;
}

void Read(ScriptBytes& script, const std::vector<uint8_t>& bytes) {
    static vlw_module* s_module = nullptr;
    if (!s_module && (vlw_module_new(&s_module) != VLW_OK || vlw_module_load_beside(s_module) != VLW_OK))
        std::abort();
    vlw_reader* reader = nullptr;
    Check(vlw_reader_new(s_module, &reader) == VLW_OK, "there is a reader");
    const bool converts = script.Next() % 2 == 1;
    if (converts)
        Check(vlw_reader_output(reader, 1000 + script.Next16() * 3, 1) == VLW_OK, "any rate is taken");
    const vlw_code opened = vlw_reader_open_memory(reader, bytes.data(), bytes.size());
    Check(opened == VLW_OK || *vlw_reader_error(reader)->text != 0, "a failure has a sentence");
    vlw_code code = opened;
    if (opened == VLW_OK && vlw_reader_channels(reader) <= 8) {
        vlw_tags* tags = nullptr;
        Check(vlw_tags_new(&tags) == VLW_OK, "there are tags");
        if (vlw_reader_tags(reader, tags) != VLW_OK)
            Check(*vlw_reader_error(reader)->text != 0, "a failure has a sentence");
        vlw_tags_free(tags);
        const std::vector<int16_t> all = Frames(reader, kFrames, code);
        const size_t channels = vlw_reader_channels(reader);
        const size_t count = all.size() / channels;
        if (code == VLW_END && vlw_reader_frames(reader) >= 0)
            Check(vlw_reader_frames(reader) == static_cast<int64_t>(count),
                  "there are as many frames as were told");
        for (int i = 0; i < 3 && code >= 0; ++i) {
            const size_t place = script.Next16() % (count + 1);
            const vlw_code moved = vlw_reader_seek(reader, static_cast<int64_t>(place));
            if (moved < 0) break;
            Check(vlw_reader_tell(reader) == static_cast<int64_t>(place), "it moves to where it is sent");
            vlw_code again = VLW_OK;
            const std::vector<int16_t> part =
                Frames(reader, std::min<size_t>(script.Next16() % 2000, count - place), again);
            Check(again == VLW_OK && std::equal(part.begin(), part.end(),
                                                all.begin() + static_cast<std::ptrdiff_t>(place * channels)),
                  "a frame is the same from wherever it is read");
        }
    }
    vlw_reader_free(reader);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptBytes script(data, size);
    ScriptBytes steps = script.Part(kHead);
    ScriptBytes failing = steps.Part(2);
    const std::vector<uint8_t> bytes = script.Rest();
    MemoryInput input(bytes.data(), bytes.size());
    MemoryInOrder inOrder(bytes);
    try {
        const FailureByScript failure(failing);
        Scan(inOrder, bytes.size());
    } catch (const std::bad_alloc&) {
    }
    Scan(input, bytes.size());
    Scan(inOrder, bytes.size());
    Read(steps, bytes);
    return 0;
}
