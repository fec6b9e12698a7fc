#include "capi/audio/SourceFrames.h"

#include <algorithm>

#include "capi/ModuleFailure.h"

namespace {

constexpr size_t kMostAtOnce = size_t{1} << 20;  // frames
constexpr size_t kDropped = 4096;                // samples in a block that nobody wants

}  // namespace

SourceFrames::SourceFrames(ModuleReaders& readers, Input& input, const SourceFacts& facts)
    : m_input(input),
      m_facts(facts),
      m_stream(input, facts, facts.directBits != 0 ? facts.unit.bytes : 1),
      m_reader(facts.directBits != 0 ? readers.Direct() : readers.Decoding()) {
    KeepUnit();
    Open();
}

// The stream goes with this object, so the module has to let go of it first.
SourceFrames::~SourceFrames() { m_reader.Close(); }

// From the stream's start.
void SourceFrames::Open() {
    m_isOpen = false;
    // A direct reader looks for chunks after the audio; a decoder tries the audio itself.
    m_stream.HideAudio(m_facts.directBits != 0);
    const Result opened = m_reader.OpenStream(&m_stream, OPEN_READ_ONLY);
    m_stream.HideAudio(false);
    if (opened != RESULT_OK) m_stream.ThrowFailure();
    RequireModule(opened, m_facts.directBits != 0 ? "Reading" : "Decoding", m_input.Label());
    RequireModule(m_reader.SetOutputFormat(m_facts.channels, m_facts.rate, kBytesPerSample), "Reading",
                  m_input.Label());
    m_isOpen = true;
}

void SourceFrames::SeekTo(int64_t frame) { m_position = frame; }

// The last place at or before the frame where decoding can begin.
int64_t SourceFrames::UnitStart(int64_t frame) const {
    return CanJump() ? frame / m_facts.unit.frames * m_facts.unit.frames : 0;
}

uint64_t SourceFrames::ByteOf(int64_t unitStart) const {
    return static_cast<uint64_t>(unitStart / std::max<int64_t>(m_facts.unit.frames, 1)) * m_facts.unit.bytes;
}

// A decoder reads ahead, and begins anew after a failure: what it read since then must still be there.
void SourceFrames::KeepUnit() {
    if (!m_input.IsSeekable() && m_facts.directBits == 0 && CanJump())
        m_input.KeepFrom(m_facts.audioPlace + ByteOf(UnitStart(m_standsAt)));
}

// A decoder's thread may be reading, which has to end before the stream is changed under it.
void SourceFrames::Release() {
    if (!m_isOpen || m_facts.directBits != 0) return;
    m_reader.Close();
    m_isOpen = false;
}

// Brings the module to the position.
void SourceFrames::Stand() {
    if (m_last) std::rethrow_exception(m_last);
    const bool inReach = m_isOpen && m_standsAt <= m_position;
    const int64_t start = UnitStart(m_position);
    // A few frames on are nearer by reading than by a new start.
    if (!inReach || (CanJump() && start > m_standsAt + static_cast<int64_t>(m_facts.unit.frames))) {
        Release();
        m_stream.ShowFrom(ByteOf(start));
        if (m_isOpen)
            RequireModule(m_reader.Seek(ORIGIN_START, 0, nullptr), "Moving in", m_input.Label());
        else
            Open();
        m_standsAt = start;
    }
    int16_t dropped[kDropped];
    while (m_standsAt < m_position) {
        const auto left = static_cast<size_t>(m_position - m_standsAt);
        if (ReadSome(dropped, std::min(left, kDropped / m_facts.channels)) == 0) {
            m_position = m_standsAt;  // the end
            break;
        }
    }
}

// What a decoder gives beyond it is filler. Of an input in order the promise is all that there is.
std::optional<int64_t> SourceFrames::Length() const {
    if (m_facts.frames || m_facts.unit.bytes == 0) return m_facts.frames;
    return m_facts.promised;
}

size_t SourceFrames::Read(int16_t* buffer, size_t frames) {
    if (const std::optional<int64_t> length = Length())
        frames =
            std::min<uint64_t>(frames, static_cast<uint64_t>(std::max<int64_t>(*length - m_position, 0)));
    if (frames == 0) return 0;
    if (!m_isOpen || m_standsAt != m_position) Stand();
    const size_t done = ReadSome(buffer, frames);
    m_position += static_cast<int64_t>(done);
    return done;
}

size_t SourceFrames::ReadSome(int16_t* buffer, size_t frames) {
    uint32_t done = 0;
    uint8_t ignored = 0;
    const auto wanted = static_cast<uint32_t>(std::min(frames, kMostAtOnce));
    const Result result = m_reader.Read(buffer, wanted, &done, &ignored);
    // Of a torn block decoders make frames that aren't there.
    if (m_facts.directBits == 0 && m_facts.unit.bytes != 0) {
        const int64_t there = m_facts.unit.FramesIn(m_stream.BytesSeen()) - m_standsAt;
        done = static_cast<uint32_t>(std::clamp<int64_t>(there, 0, done));
    }
    // The stream knows why a read failed, and a decoder doesn't go on after one: the next call opens anew at
    // the position. A direct read just goes on.
    if (done == 0 && m_stream.HasFailed()) {
        Release();
        try {
            m_stream.ThrowFailure();
        } catch (...) {
            if (!m_isOpen && !m_input.IsSeekable() && !CanJump()) m_last = std::current_exception();
            throw;
        }
    }
    RequireModule(result, "Reading", m_input.Label());
    m_standsAt += done;
    KeepUnit();
    return done;
}

bool SourceFrames::EndedEarly() const {
    if (m_facts.frames && m_position < *m_facts.frames) return true;  // it has become shorter
    if (m_facts.promised) return m_position < *m_facts.promised;
    if (m_facts.IsCut()) return true;
    return !m_facts.audioBytes && m_facts.declaredBytes && m_stream.BytesSeen() < *m_facts.declaredBytes;
}
