#include "capi/handles/WaveOutput.h"

#include <algorithm>
#include <cmath>

#include "capi/ModuleFailure.h"
#include "capi/SystemFailure.h"
#include "capi/audio/ChannelMix.h"
#include "capi/audio/ConvertedFrames.h"
#include "capi/audio/DownMix.h"
#include "capi/handles/WriteFailure.h"
#include "riff/BlockSource.h"
#include "riff/ChunkWalk.h"

namespace {

constexpr uint32_t kOutputBlock = 16384;
constexpr uint32_t kStereo = 2;
constexpr uint32_t kMaxWriterRate = 65535;  // Hz, of what the module's writer takes in
constexpr uint64_t kHeader = 44;            // bytes
// Beyond what the ratio tells: the rounding at the end, and the pad byte of odd audio.
constexpr uint64_t kSpareFrames = 2;
constexpr int64_t kEasily = int64_t{3} << 30;  // bytes
constexpr size_t kChunkBlock = 65536;          // bytes that are written at once

// As the module reckons: its filter steps in whole numbers near the rates.
double RatioOf(const Module& module, uint32_t from, uint32_t to) {
    return from == to ? 1 : PushedConversion(module, {from, 1}, {to, 1}).Ratio();
}

// The written file, read back.
class WrittenFile final : public BlockSource {
public:
    WrittenFile(const Descriptor& file, uint64_t size) : BlockSource(size), m_file(file) {}

private:
    size_t ReadAt(uint64_t place, void* buffer, size_t count) override {
        size_t done = 0;
        return m_file.ReadAt(buffer, count, place, done) == 0 ? done : 0;
    }

    const Descriptor& m_file;
};

}  // namespace

WaveOutput::WaveOutput(const Module& module, const WavePlan& plan, const OutputFile& file, FileLabel label)
    : m_module(module),
      m_plan(plan),
      m_file(file),
      m_label(std::move(label)),
      m_format(module.Formats()[plan.formatIndex]),
      m_given(plan.input) {
    if (IsDownMix(m_given.channels, m_format.channels)) m_given.channels = kStereo;
    if (m_given.rate > kMaxWriterRate) {
        const AudioShape wanted = {m_format.samplesPerSec, m_format.channels};
        m_pushed.emplace(module, m_given, wanted);
        m_ratio = m_pushed->Ratio();
        m_given = wanted;
    } else {
        m_ratio = RatioOf(module, m_given.rate, m_format.samplesPerSec);
    }
    m_writer = OpenWriter(module, m_given, plan.formatIndex, plan.text, file.Path(), m_label);
}

int64_t WaveOutput::FirstFrame(uint32_t fromRate, uint32_t toRate) {
    return fromRate > kMaxWriterRate ? 0 : PassedOverByWriter(fromRate, toRate);
}

int64_t WaveOutput::FramesOf(int64_t frames, uint32_t fromRate, uint32_t toRate) {
    return fromRate > kMaxWriterRate ? ConvertedLength(frames, fromRate, toRate)
                                     : LengthByWriter(frames, fromRate, toRate);
}

bool WaveOutput::FitsEasily(int64_t frames, const AudioFormatInfo& format) {
    return frames < kEasily / std::max<int64_t>(format.blockAlign, 1);
}

void WaveOutput::RequireRoom(uint64_t frames, uint64_t more) const {
    const double all = std::ceil((static_cast<double>(m_taken) + static_cast<double>(frames)) * m_ratio);
    const uint64_t spare = m_ratio == 1 ? 0 : kSpareFrames;
    const double bytes = (all + static_cast<double>(spare)) * m_format.blockAlign;
    if (m_plan.chunks) more += m_plan.chunks->Bytes();
    if (bytes + static_cast<double>(kHeader + more) > static_cast<double>(kLargestFile))
        throw Failure(VLW_TOO_LARGE, m_label.name + " would become larger than a WAV file can be, 4 GiB.",
                      m_label.path);
}

void WaveOutput::Write(const int16_t* samples, size_t frames) {
    RequireRoom(frames, 0);
    const bool mixed = IsDownMix(m_plan.input.channels, m_format.channels);
    while (frames > 0) {
        const auto block = static_cast<uint32_t>(std::min<size_t>(frames, kOutputBlock));
        if (mixed) {  // (1)
            m_mixed.resize(size_t{block} * kStereo);
            MixToStereo(samples, block, m_mixed.data());
        }
        WriteShaped(mixed ? m_mixed.data() : samples, block);
        m_taken += block;
        frames -= block;
        samples += size_t{block} * m_plan.input.channels;
    }
}

void WaveOutput::WriteShaped(const int16_t* samples, uint32_t frames) {
    if (!m_pushed) return WriteToModule(samples, frames);
    m_pushed->Push(samples, frames, [&](const int16_t* made, uint32_t count) {  // (2)
        WriteToModule(made, count);
    });
}

// (3)
void WaveOutput::WriteToModule(const int16_t* samples, uint32_t frames) {
    uint32_t accepted = 0;
    ForgetLastError();
    const Result result = m_writer->Write(samples, frames, &accepted);
    if (result == RESULT_WRITE_FAILED)
        throw SystemFailure(FindWriteError(m_file.Bytes(), uint64_t{frames} * m_format.blockAlign),
                            "Writing to " + m_label.name, m_label.path);
    RequireModule(result, "Writing to", m_label);
    m_written += accepted;
}

void WaveOutput::Finish(const Tags& tags, const Tags& expected) {
    if (m_pushed) m_pushed->Drain([&](const int16_t* made, uint32_t count) { WriteToModule(made, count); });
    if (!tags.AllTexts().empty()) GiveTags(*m_writer, tags);
    ForgetLastError();
    RequireModule(m_writer->Close(), "Completing", m_label);
    AppendChunks();
    // The Close reports no failed write, so this is where one shows; the reason is asked for at once.
    const int reason = FindWriteError(m_file.Bytes(), 1);
    if (!HasItsSize() || !HasItsChunks() || !HasItsAudio() || !HasTags(expected))
        throw SystemFailure(reason, "Completing " + m_label.name, m_label.path);
}

uint64_t WaveOutput::FileSize() const {
    uint64_t size = 0;
    RequireSystem(m_file.Bytes().Size(size), "Reading back", m_label.name);
    return size;
}

// After the content the size that makes it count.
void WaveOutput::AppendChunks() {
    m_chunksAt = FileSize();
    if (!m_plan.chunks || m_plan.chunks->Bytes() == 0) return;
    const auto require = [&](int error) {
        if (error != 0) throw SystemFailure(error, "Writing to " + m_label.name, m_label.path);
    };
    uint64_t place = m_chunksAt;
    std::vector<uint8_t> block;
    block.reserve(kChunkBlock);
    const auto write = [&] {
        require(m_file.Bytes().WriteAt(block.data(), block.size(), place));
        place += block.size();
        block.clear();
    };
    m_plan.chunks->WriteTo([&](const void* bytes, size_t count) {
        const auto* const from = static_cast<const uint8_t*>(bytes);
        if (block.size() + count > kChunkBlock) write();
        block.insert(block.end(), from, from + count);
    });
    write();
    uint8_t size[4];
    StoreLE32(size, static_cast<uint32_t>(place - kChunkHeaderSize));
    require(m_file.Bytes().WriteAt(size, sizeof size, 4));
}

bool WaveOutput::HasItsChunks() const {
    if (!m_plan.chunks || m_plan.chunks->Bytes() == 0) return true;
    WrittenFile file(m_file.Bytes(), FileSize());
    file.MoveTo(m_chunksAt);
    return m_plan.chunks->AreIn(file, m_chunksAt, file.Size());
}

// Whether the header tells of the file as it is.
bool WaveOutput::HasItsSize() const {
    uint8_t head[kChunkHeaderSize] = {};
    size_t done = 0;
    uint64_t size = 0;
    int error = m_file.Bytes().ReadAt(head, sizeof head, 0, done);
    if (error == 0) error = m_file.Bytes().Size(size);
    if (error != 0) throw SystemFailure(error, "Reading back " + m_label.name, m_label.path);
    return done == sizeof head && uint64_t{LoadLE32(head + 4)} + kChunkHeaderSize == size;
}

bool WaveOutput::HasItsAudio() {
    const RefPtr<IAC3StreamReader> reader = OpenReader(m_module, m_plan.text, m_file.Path(), m_label);
    const auto require = [&](Result result) { RequireModule(result, "Reading back", m_label); };
    AudioFormatInfo found{};
    int64_t& frames = m_frames;
    require(reader->GetSourceFormat(&found));
    require(reader->SetOutputFormat(m_format.channels, m_format.samplesPerSec, kBytesPerSample));
    require(reader->GetLength(&frames));
    if (found.channels != m_format.channels || found.samplesPerSec != m_format.samplesPerSec ||
        found.bitsPerSample != m_format.bitsPerSample)
        return false;
    // What the module's writer was given at the file's rate is there frame by frame.
    if (m_given.rate == m_format.samplesPerSec && static_cast<uint64_t>(frames) != m_written) return false;
    // A frame of the output for the rounding, and one of the input for where its end lies between two; the
    // ratio itself is known to 24 bits and more.
    const double wanted = static_cast<double>(m_taken) * m_ratio;
    const double tolerance = m_ratio == 1 ? 0 : 1 + m_ratio + wanted / (1 << 24);
    return std::abs(wanted - static_cast<double>(frames)) <= tolerance;
}

bool WaveOutput::HasTags(const Tags& expected) const {
    const RefPtr<IAC3StreamReader> reader = OpenReader(m_module, m_plan.text, m_file.Path(), m_label);
    return TagsOf(*reader).AllTexts() == expected.AllTexts();
}
