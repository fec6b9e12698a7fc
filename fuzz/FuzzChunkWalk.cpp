// The walk over chunks, and the WAV files that are read by it, against a plain model of both. A stream that
// misbehaves and memory that runs out may cost the file, never more.
#include "AudioCodec/wave/riff/CWaveFile.h"
#include "fuzz/PlainWave.h"
#include "fuzz/ScriptBytes.h"
#include "riff/ChunkWalk.h"
#include "riff/SpanSource.h"
#include "tests/support/ByteStream.h"
#include "tests/support/ScopedFile.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Any steps of a walk: its place is known in advance, as long as the bytes are there.
void PlayWalk(ScriptBytes script, const Bytes& bytes) {
    SpanSource source(bytes);
    const bool isBig = script.Next() % 2 == 1;
    ChunkWalk walk(source, isBig ? ByteOrder::Big : ByteOrder::Little, 0);
    uint64_t place = 0;
    uint64_t end = 0;  // of the current chunk
    while (!script.IsOver()) {
        const uint32_t step = script.Next() % 5;
        const uint32_t count = script.NextNumber();
        std::vector<uint8_t> buffer(std::min(count, 70000U));
        Chunk header;
        if (step == 0) {
            walk.SetSize(count);
            if (end != 0) end = walk.Current().End();
        }
        if (step == 1) {
            if (!walk.Read(buffer.data(), buffer.size())) return;
            Check(buffer.empty() || (place + buffer.size() <= bytes.size() &&
                                     std::equal(buffer.begin(), buffer.end(),
                                                bytes.begin() + static_cast<std::ptrdiff_t>(place))),
                  "a walk reads what is there");
            place += buffer.size();
        }
        if (step == 2) Check(walk.Skip(count), "memory lets itself be skipped"), place += count;
        if (step < 3) continue;
        if (step == 3) place = std::max(place, end);
        const bool found = step == 3 ? walk.Next() : walk.ReadHeader(header);
        if (step == 3) header = walk.Current();
        Check(found == (place + kChunkHeaderSize <= bytes.size()), "a header is found where there is one");
        if (!found) return;
        const uint8_t* const size = &bytes[place + 4];
        Check(header.offset == place && header.id == LoadLE32(size - 4) &&
                  header.declared == (isBig ? LoadBE32(size) : LoadLE32(size)),
              "a header is what stands there");
        if (step == 3) end = header.End();
        place += kChunkHeaderSize;
    }
}

void CompareFormat(const CWaveFile& wave, const PlainWave& plain, bool isFile) {
    const auto* const record = reinterpret_cast<const uint8_t*>(plain.record.data());
    const WaveFormat& format = wave.Format();
    const uint32_t align = LoadLE16(record + 12);
    const uint32_t product = LoadLE16(record + 2) * uint32_t{LoadLE16(record + 14)};
    Check(format.formatTag == LoadLE16(record) && format.channels == LoadLE16(record + 2) &&
              format.samplesPerSec == LoadLE32(record + 4) && format.bitsPerSample == LoadLE16(record + 14),
          "the format is the last record");
    Check(wave.ToldBlockAlign() == align && format.blockAlign == (isFile ? product / 8 & 0xFFFF : align),
          "a frame is as large as it has to be");
    Check(format.extra.size() <= std::max<size_t>(plain.record.size(), kFormatFixedSize) - kFormatFixedSize,
          "a record has no more than its chunk");
}

void CompareAudio(CWaveFile& wave, const PlainWave& plain, const Bytes& bytes, ScriptBytes script) {
    int64_t place = 0;  // the walk leaves it there
    while (!script.IsOver()) {
        const uint32_t origin = script.Next() % 4;
        const auto distance = static_cast<int64_t>(static_cast<int32_t>(script.NextNumber()));
        if (origin < 3) {
            const int64_t base = origin == 1 ? place : origin == 2 ? plain.dataSize : 0;
            place = std::max<int64_t>(base + distance, 0);
            place -= place % std::max<int64_t>(wave.Format().blockAlign, 1);
            place = std::min<int64_t>(place, plain.dataSize);
            Check(wave.SeekData(distance, origin) == RESULT_OK && wave.TellData() == place,
                  "it moves to a frame");
        } else {
            std::vector<uint8_t> buffer(static_cast<uint64_t>(distance) % 5000);
            uint32_t done = 0;
            Check(wave.ReadData(static_cast<uint32_t>(buffer.size()), buffer.data(), &done) == RESULT_OK,
                  "it reads");
            const uint64_t from =
                std::min<uint64_t>(plain.dataPlace + static_cast<uint64_t>(place), bytes.size());
            const uint64_t due =
                std::min({uint64_t{buffer.size()}, plain.dataSize - static_cast<uint64_t>(place),
                          bytes.size() - from});
            Check(done == due && std::equal(buffer.begin(), buffer.begin() + done,
                                            bytes.begin() + static_cast<std::ptrdiff_t>(from)),
                  "the audio is what stands there");
            place += done;
        }
    }
}

void Compare(CWaveFile& wave, bool opened, const PlainWave& plain, bool isFile) {
    Check(opened == plain.isSound, "a file opens where it is sound");
    if (!opened) return;
    Check(wave.DataSize() == plain.dataSize, "the audio is of its size");
    CompareFormat(wave, plain, isFile);
    Check(wave.Chunks().size() == plain.info.size(), "there are as many entries");
    for (const auto& [id, text] : plain.info)
        Check(wave.Chunks().Find(id) == text, "an entry is what stands there");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptBytes script(data, size);
    ScriptBytes steps = script.Part(kHead);
    ScriptBytes failing = steps.Part(2);
    ScriptBytes streaming = steps.Part(1);
    const Bytes bytes = script.Rest();
    PlayWalk(steps, bytes);

    const PlainWave plain(bytes);
    ByteStream stream(bytes);
    CWaveFile wave;
    wave.AttachStream(&stream);
    Compare(wave, wave.ParseChunks(), plain, false);
    if (const uint32_t call = streaming.Next()) {
        ByteStream broken(bytes);
        (call % 3 == 0   ? broken.failFromCall
         : call % 3 == 1 ? broken.shortCall
                         : broken.emptyCall) = call / 3;
        wave.AttachStream(&broken);
        wave.ParseChunks();
    }

    const ScopedFile file(bytes);
    CWaveFile opened;
    const std::u16string path = file.Wide();
    try {
        const FailureByScript failure(failing);
        opened.OpenForReading(path.c_str(), true);
    } catch (const std::bad_alloc&) {
    }
    CWaveFile fresh;
    Compare(fresh, fresh.OpenForReading(path.c_str(), true) == RESULT_OK, plain, true);
    // What was left of a failure doesn't show; but a format stays, and with it a file that has none opens.
    if (plain.isSound) Compare(opened, opened.OpenForReading(path.c_str(), true) == RESULT_OK, plain, true);
    if (plain.isSound) CompareAudio(fresh, plain, bytes, steps);
    return 0;
}
