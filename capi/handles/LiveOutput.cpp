#include "capi/handles/LiveOutput.h"

#include <algorithm>

#include "AudioCodec/wave/SampleWidth.h"
#include "capi/SystemFailure.h"
#include "riff/PcmHead.h"

namespace {

constexpr size_t kSentBytes = 65536;  // bytes that are sent at once
constexpr uint32_t kNotKnown = UINT32_MAX;

}  // namespace

uint64_t LiveOutput::AudioBytes() const {
    return static_cast<uint64_t>(m_plan.frames.value_or(0)) * m_plan.format.blockAlign;
}

uint64_t LiveOutput::RestBytes() const {
    return m_plan.tags.size() + (m_plan.chunks ? m_plan.chunks->Bytes() : 0);
}

void LiveOutput::Begin(LivePlan plan) {
    m_plan = std::move(plan);
    const AudioFormatInfo& format = m_plan.format;
    const WaveFormat stored = WaveFormat::Pcm(format.channels, format.samplesPerSec, format.bitsPerSample);
    const uint64_t audio = AudioBytes();
    const uint64_t whole = kPcmHeadSize + audio + (audio & 1) + RestBytes();
    if (whole > UINT32_MAX)
        throw Failure(VLW_TOO_LARGE, m_label.First() + " would become larger than a WAV file can be, 4 GiB.",
                      m_label.path);
    const bool known = m_plan.frames.has_value();
    const PcmHead head =
        MakePcmHead(stored, known ? static_cast<uint32_t>(whole - kChunkHeaderSize) : kNotKnown,
                    known ? static_cast<uint32_t>(audio) : kNotKnown);
    constexpr size_t kToAudio = kPcmHeadSize - kChunkHeaderSize;
    Put(head.data(), kToAudio);
    if (!known) PutRest();
    Put(&head[kToAudio], kChunkHeaderSize);
    Send();
}

void LiveOutput::Write(const int16_t* samples, size_t frames) {
    if (m_plan.isShort) frames = std::min<size_t>(frames, static_cast<size_t>(*m_plan.frames - m_frames));
    const size_t count = frames * m_plan.format.channels;
    m_frames += static_cast<int64_t>(frames);
    if (m_plan.format.bitsPerSample == 8) {
        m_block.resize(count);
        std::transform(samples, samples + count, m_block.begin(), NarrowSample);
    } else {
        Put(samples, count * sizeof *samples);
    }
    Send();
}

void LiveOutput::Finish() {
    if (!m_plan.frames) return;
    if (m_frames != *m_plan.frames)
        throw Failure(VLW_DAMAGED,
                      m_label.First() + " got " + std::to_string(m_frames) +
                          " frames, and its head promises " + std::to_string(*m_plan.frames) + '.',
                      m_label.path);
    const uint8_t pad = 0;
    Put(&pad, AudioBytes() & 1);
    PutRest();
    Send();
}

void LiveOutput::PutRest() {
    Put(m_plan.tags.data(), m_plan.tags.size());
    if (m_plan.chunks) m_plan.chunks->WriteTo([&](const void* bytes, size_t count) { Put(bytes, count); });
}

void LiveOutput::Put(const void* bytes, size_t count) {
    const auto* const from = static_cast<const uint8_t*>(bytes);
    if (m_block.size() + count > kSentBytes) Send();
    m_block.insert(m_block.end(), from, from + count);
}

void LiveOutput::Send() {
    const int error = m_target.Write(m_block.data(), m_block.size());
    m_block.clear();
    if (error != 0) throw SystemFailure(error, "Writing to " + m_label.name, m_label.path);
}
