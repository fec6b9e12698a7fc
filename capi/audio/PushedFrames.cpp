#include "capi/audio/PushedFrames.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t kBits = 16;
constexpr size_t kSampleBytes = 2;

}  // namespace

PushedFrames::PushedFrames(uint32_t channels, uint32_t rate)
    : m_channels(channels),
      m_head(MakePcmHead(WaveFormat::Pcm(channels, rate, kBits),
                         kPromisedBytes + kPcmHeadSize - kChunkHeaderSize, kPromisedBytes)) {}

void PushedFrames::Push(const int16_t* samples, size_t frames) {
    // What was read makes room first, so that the memory stays as small as what waits.
    m_samples.erase(m_samples.begin(), m_samples.begin() + static_cast<std::ptrdiff_t>(m_used));
    m_used = 0;
    m_samples.insert(m_samples.end(), samples, samples + frames * m_channels);
}

int32_t PushedFrames::Read(void* buffer, uint32_t size, uint32_t* done) {
    *done = 0;
    if (m_place < m_head.size()) {
        *done = static_cast<uint32_t>(std::min<uint64_t>(size, m_head.size() - m_place));
        std::memcpy(buffer, m_head.data() + m_place, *done);
    } else if (m_samples.size() > m_used) {
        const size_t samples = std::min(size / kSampleBytes, m_samples.size() - m_used);
        std::memcpy(buffer, m_samples.data() + m_used, samples * kSampleBytes);
        m_used += samples;
        *done = static_cast<uint32_t>(samples * kSampleBytes);
    }
    m_place += *done;
    return PLATFORM_OK;
}
