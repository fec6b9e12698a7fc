#include "capi/audio/ConvertedFrames.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <optional>

#include "AudioCodec/shell/object/Saturating.h"
#include "AudioCodec/wave/converter/ConversionRatio.h"
#include "capi/ModuleFailure.h"
#include "capi/audio/ReadOnlyStream.h"
#include "riff/PcmHead.h"

namespace {

constexpr size_t kMostAtOnce = size_t{1} << 14;  // frames; what they are made of is kept until all came
constexpr size_t kDropped = 4096;                // samples in a block that nobody wants
constexpr int64_t kRunIn = 64;                   // source frames; the filter reaches 16 to each side
constexpr int64_t kMoveFirst = -1;

ConversionRatio RatioOf(uint32_t fromRate, uint32_t toRate) {
    return FindConversionRatio(static_cast<int32_t>(fromRate), static_cast<int32_t>(toRate));
}

}  // namespace

// An output frame for each step that begins before the end: the steps of `phaseCount` frames are `inputStep`
// source frames.
int64_t ConvertedLength(int64_t frames, uint32_t fromRate, uint32_t toRate) {
    if (fromRate == toRate) return frames;
    const ConversionRatio ratio = RatioOf(fromRate, toRate);
    const int64_t whole = Saturating::MulDiv(frames, ratio.phaseCount, ratio.inputStep);
    return whole + (Saturating::MulDiv(whole, ratio.inputStep, ratio.phaseCount) < frames ? 1 : 0);
}

// Frame p steps over the whole numbers up to (p + 1) M / L, so the first that reaches 1 is L / M, rounded up,
// less 1.
int64_t PassedOverByWriter(uint32_t fromRate, uint32_t toRate) {
    const ConversionRatio ratio = RatioOf(fromRate, toRate);
    return (int64_t{ratio.phaseCount} - 1) / ratio.inputStep;
}

int64_t LengthByWriter(int64_t frames, uint32_t fromRate, uint32_t toRate) {
    if (fromRate == toRate || frames == 0) return frames;
    const ConversionRatio ratio = RatioOf(fromRate, toRate);
    if (frames < kLeastSourceFrames)
        return std::max<int64_t>(Saturating::MulDiv(frames, ratio.phaseCount, ratio.inputStep), 1);
    return ConvertedLength(frames, fromRate, toRate) - PassedOverByWriter(fromRate, toRate);
}

// The source as a WAV file of endless audio that begins at any frame.
class ConvertedFrames::SourceStream final : public ReadOnlyStream {
public:
    SourceStream(FrameSource& source, uint32_t rate)
        : m_source(source),
          m_frameBytes(source.Channels() * kBytesPerSample),
          m_head(MakePcmHead(WaveFormat::Pcm(source.Channels(), rate, 16), UINT32_MAX, UINT32_MAX)) {}

    void BeginAt(int64_t frame) {
        m_begin = frame;
        m_place = 0;
        m_cutShort = nullptr;
    }
    // No frame before this one will be needed again.
    void KeepFrom(int64_t frame) {
        const size_t gone = Samples(std::clamp<int64_t>(frame - m_keptAt, 0, KeptFrames()));
        // Not for every few frames, so that what is kept isn't moved again and again.
        if (gone < m_kept.size() / 2) return;
        m_kept.erase(m_kept.begin(), m_kept.begin() + static_cast<std::ptrdiff_t>(gone));
        m_keptAt += static_cast<int64_t>(gone / m_source.Channels());
    }
    // Until then there is a head alone, for the module's look at all chunks.
    void BeginAudio() { m_hasAudio = true; }
    // The source's length; nothing before its end was met.
    std::optional<int64_t> End() const { return m_end; }
    void ThrowFailure() {
        if (m_failure) std::rethrow_exception(std::exchange(m_failure, nullptr));
    }

    int32_t Read(void* buffer, uint32_t size, uint32_t* done) override {
        auto* const bytes = static_cast<uint8_t*>(buffer);
        *done = 0;
        if (m_place < kPcmHeadSize) {
            *done = static_cast<uint32_t>(std::min<uint64_t>(size, kPcmHeadSize - m_place));
            std::memcpy(bytes, &m_head[m_place], *done);
            m_place += *done;
            return PLATFORM_OK;
        }
        if (!m_hasAudio) return PLATFORM_OK;
        try {
            if (m_cutShort) std::rethrow_exception(std::exchange(m_cutShort, nullptr));
            const size_t frames = ReadFrames(reinterpret_cast<int16_t*>(bytes), size / m_frameBytes);
            *done = static_cast<uint32_t>(frames * m_frameBytes);
            m_place += *done;
            return PLATFORM_OK;
        } catch (...) {
            m_failure = std::current_exception();
            return PLATFORM_FAILED;
        }
    }

private:
    uint64_t SizeOfStream() const override { return kEndless; }

    // As many as there are: fewer only at the end, or where the next call fails.
    size_t ReadFrames(int16_t* buffer, size_t frames) {
        const int64_t start = m_begin + static_cast<int64_t>((m_place - kPcmHeadSize) / m_frameBytes);
        const uint32_t channels = m_source.Channels();
        size_t done = 0;
        if (!m_end || start < *m_end) {
            done = TakeKept(start, buffer, frames);
            if (done < frames)
                done += ReadSource(start + static_cast<int64_t>(done), buffer + Samples(done), frames - done);
            if (m_source.Position() < start) m_end = m_source.Position();  // it had fewer than that
        }
        // A source shorter than the filter's beginning gets silence after it.
        const int64_t here = start + static_cast<int64_t>(done);
        if (m_end && *m_end < kLeastSourceFrames && here >= *m_end && here < kLeastSourceFrames &&
            m_begin == 0) {
            const auto silence = static_cast<size_t>(
                std::min<int64_t>(static_cast<int64_t>(frames - done), kLeastSourceFrames - here));
            std::fill_n(buffer + done * channels, silence * channels, int16_t{0});
            done += silence;
        }
        return done;
    }

    template <class Count>
    size_t Samples(Count frames) const {
        return static_cast<size_t>(frames) * m_source.Channels();
    }
    int64_t KeptFrames() const { return static_cast<int64_t>(m_kept.size() / m_source.Channels()); }

    // A source in order gives its frames once, and a failure makes the module begin anew.
    size_t TakeKept(int64_t start, int16_t* buffer, size_t frames) const {
        if (start < m_keptAt || start >= m_keptAt + KeptFrames()) return 0;
        const int64_t from = start - m_keptAt;
        const size_t done = std::min(frames, static_cast<size_t>(KeptFrames() - from));
        std::copy_n(m_kept.begin() + static_cast<std::ptrdiff_t>(Samples(from)), Samples(done), buffer);
        return done;
    }

    size_t ReadSource(int64_t start, int16_t* buffer, size_t frames) {
        if (m_source.Position() != start) m_source.SeekTo(start);
        if (m_keptAt + KeptFrames() != start) {
            m_kept.clear();
            m_keptAt = start;
        }
        size_t done = 0;
        try {
            while (done < frames) {
                const size_t got = m_source.Read(buffer + Samples(done), frames - done);
                m_kept.insert(m_kept.end(), buffer + Samples(done), buffer + Samples(done + got));
                if (got == 0) {
                    m_end = m_source.Position();
                    break;
                }
                done += got;
            }
        } catch (...) {
            if (done == 0) throw;
            m_cutShort = std::current_exception();  // the next read fails at once
        }
        return done;
    }

    FrameSource& m_source;
    const uint32_t m_frameBytes;
    const PcmHead m_head;
    bool m_hasAudio = false;
    std::vector<int16_t> m_kept;  // the last frames of the source
    int64_t m_keptAt = 0;         // the first of them
    int64_t m_begin = 0;
    std::optional<int64_t> m_end;
    std::exception_ptr m_cutShort;
    std::exception_ptr m_failure;
};

ConvertedFrames::ConvertedFrames(const ModuleReaders& readers, FrameSource& source, uint32_t sourceRate,
                                 const ConversionTarget& target)
    : m_sourceRate(sourceRate),
      m_rate(target.rate),
      m_ratio(RatioOf(sourceRate, target.rate)),
      m_channels(target.channels),
      m_stream(std::make_unique<SourceStream>(source, sourceRate)),
      m_reader(readers.NewReader()) {
    RequireModule(m_reader->OpenStream(m_stream.get(), OPEN_READ_ONLY), "Converting", FileLabel::OfSource());
    m_stream->BeginAudio();
    RequireModule(m_reader->SetOutputFormat(m_channels, m_rate, kBytesPerSample), "Converting",
                  FileLabel::OfSource());
    SeekTo(source.Position() == 0 ? 0 : ConvertedLength(source.Position(), sourceRate, target.rate));
}

// The stream goes with this object, so the module has to let go of it first.
ConvertedFrames::~ConvertedFrames() { m_reader->Close(); }

void ConvertedFrames::SeekTo(int64_t frame) {
    m_position = frame;
    if (m_standsAt != frame) m_standsAt = kMoveFirst;
}

// After so many cycles the module can begin for the frame.
int64_t ConvertedFrames::CyclesBefore(int64_t frame) const {
    const int64_t source = Saturating::MulDiv(frame, m_ratio.inputStep, m_ratio.phaseCount);
    return std::max<int64_t>(source - kRunIn, 0) / m_ratio.inputStep;
}

void ConvertedFrames::Stand() {
    if (m_standsAt == kMoveFirst) {
        const int64_t cycles = CyclesBefore(m_position);
        m_stream->BeginAt(cycles * m_ratio.inputStep);
        RequireModule(m_reader->Seek(ORIGIN_START, 0, nullptr), "Moving in", "the converted audio");
        m_standsAt = cycles * m_ratio.phaseCount;
    }
    int16_t dropped[kDropped];
    while (m_standsAt < m_position) {
        const auto left = static_cast<size_t>(m_position - m_standsAt);
        if (ReadSome(dropped, std::min(left, kDropped / m_channels)) == 0) {
            m_position = m_standsAt;  // the end
            break;
        }
    }
}

size_t ConvertedFrames::Read(int16_t* buffer, size_t frames) {
    if (m_standsAt != m_position) Stand();
    const size_t done = ReadSome(buffer, frames);
    m_position += static_cast<int64_t>(done);
    return done;
}

size_t ConvertedFrames::ReadSome(int16_t* buffer, size_t frames) {
    uint32_t done = 0;
    uint8_t ignored = 0;
    const auto wanted = static_cast<uint32_t>(std::min(frames, kMostAtOnce));
    const Result result = m_reader->Read(buffer, wanted, &done, &ignored);
    if (result != RESULT_OK) {
        // What the module had made of the same call is lost with it, so it is made anew.
        m_standsAt = kMoveFirst;
        m_stream->ThrowFailure();
    }
    RequireModule(result, "Converting", FileLabel::OfSource());
    // What the silence after a short source added isn't audio.
    if (const std::optional<int64_t> end = m_stream->End()) {
        const int64_t left = ConvertedLength(*end, m_sourceRate, m_rate) - m_standsAt;
        done = static_cast<uint32_t>(std::clamp<int64_t>(left, 0, done));
    }
    m_standsAt += done;
    m_stream->KeepFrom(CyclesBefore(m_standsAt) * m_ratio.inputStep);
    return done;
}
