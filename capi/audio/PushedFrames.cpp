#include "capi/audio/PushedFrames.h"

#include <algorithm>
#include <cstring>

#include "riff/WaveFormat.h"
#include "riff/WaveTypes.h"

namespace {

constexpr uint16_t kBits = 16;
constexpr size_t kSampleBytes = 2;

std::vector<uint8_t> MakeHead(uint32_t channels, uint32_t rate) {
    const WaveFormat format = WaveFormat::Pcm(static_cast<uint16_t>(channels), rate, kBits);
    const uint32_t formatSize = format.DiskSize();
    constexpr size_t kFormatAt = 20;
    std::vector<uint8_t> head(kFormatAt + formatSize + kChunkHeaderSize);
    StoreLE32(&head[0], ChunkId::kRiff);
    StoreLE32(&head[4], static_cast<uint32_t>(PushedFrames::kPromisedBytes + head.size() - kChunkHeaderSize));
    StoreLE32(&head[8], ChunkId::kWave);
    StoreLE32(&head[12], ChunkId::kFmt);
    StoreLE32(&head[16], formatSize);
    uint8_t record[kFormatFixedSize];
    format.StoreFixed(record);
    std::memcpy(&head[kFormatAt], record, std::min<size_t>(formatSize, sizeof record));
    StoreLE32(&head[kFormatAt + formatSize], ChunkId::kData);
    StoreLE32(&head[kFormatAt + formatSize + 4], PushedFrames::kPromisedBytes);
    return head;
}

}  // namespace

PushedFrames::PushedFrames(uint32_t channels, uint32_t rate)
    : m_channels(channels), m_head(MakeHead(channels, rate)) {}

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
