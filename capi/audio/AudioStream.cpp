#include "capi/audio/AudioStream.h"

#include <algorithm>
#include <cstring>

#include "riff/WaveTypes.h"

namespace {

constexpr size_t kSmallestRead = 65536;  // below it, reads are made of larger ones
constexpr uint64_t kLargestSize = 0xFFFFFFFF;

void StoreSize(uint8_t* place, uint64_t size, bool bigEndian) {
    const auto told = static_cast<uint32_t>(std::min(size, kLargestSize));
    StoreLE32(place, bigEndian ? __builtin_bswap32(told) : told);
}

}  // namespace

AudioStream::AudioStream(Input& input, const SourceFacts& facts, uint32_t frameBytes)
    : m_input(input), m_facts(facts), m_frameBytes(std::max(frameBytes, 1u)), m_head(facts.head) {
    ShowFrom(0);
}

void AudioStream::ShowFrom(uint64_t audioByte) {
    m_windowAt = audioByte;
    m_seen = audioByte;
    m_place = 0;
    m_failure = nullptr;
    // As large as can be told where the end isn't known: a decoder then reads on until there is nothing.
    const uint64_t left =
        m_facts.audioBytes ? *m_facts.audioBytes - std::min(*m_facts.audioBytes, audioByte) : kLargestSize;
    const bool aiff = LoadLE32(m_head.data()) == ChunkId::kForm;
    constexpr size_t kAiffSoundHead = 8;
    const size_t sizePlace = m_head.size() - (aiff ? kAiffSoundHead : 0) - 4;
    StoreSize(&m_head[4], left + m_head.size() - kChunkHeaderSize, aiff);
    StoreSize(&m_head[sizePlace], left + (aiff ? kAiffSoundHead : 0), aiff);
}

uint64_t AudioStream::SizeOfStream() const {
    if (!m_facts.audioBytes) return kEndless;
    return m_head.size() + *m_facts.audioBytes - std::min(*m_facts.audioBytes, m_windowAt);
}

int32_t AudioStream::Read(void* buffer, uint32_t size, uint32_t* done) {
    auto* const bytes = static_cast<uint8_t*>(buffer);
    *done = ReadHead(bytes, size);
    if (*done == size || m_isHidden) return PLATFORM_OK;
    // A decoder that went on after a gap would take the middle of a block for its start.
    if (HasFailed()) return PLATFORM_FAILED;
    try {
        *done += ReadAudio(bytes + *done, size - *done);
        return PLATFORM_OK;
    } catch (...) {
        KeepFailure();
        return PLATFORM_FAILED;
    }
}

uint32_t AudioStream::ReadHead(uint8_t* buffer, uint32_t size) {
    if (m_place >= m_head.size()) return 0;
    const auto done = static_cast<uint32_t>(std::min<uint64_t>(size, m_head.size() - m_place));
    std::memcpy(buffer, &m_head[m_place], done);
    m_place += done;
    return done;
}

// Throws only where not even one frame can be had; the next read fails where this one was cut short.
uint32_t AudioStream::ReadAudio(uint8_t* buffer, uint32_t size) {
    const uint64_t start = m_windowAt + m_place - m_head.size();
    const uint64_t most = m_facts.audioBytes ? *m_facts.audioBytes : m_facts.declaredBytes.value_or(kEndless);
    const uint64_t wanted = std::min<uint64_t>(size, most - std::min(most, start));
    uint64_t done = 0;
    try {
        while (done < wanted) {
            const size_t got = ReadAhead(start + done, buffer + done, wanted - done);
            if (got == 0) break;
            done += got;
        }
    } catch (...) {
        const uint64_t torn = (start + done) % m_frameBytes;
        if (torn >= done) throw;
        done -= torn;
        KeepFailure();
    }
    m_seen = start + done;
    m_place += done;
    return static_cast<uint32_t>(done);
}

// Small reads of what can be moved in are made of larger ones; an input in order has blocks of its own.
size_t AudioStream::ReadAhead(uint64_t at, uint8_t* buffer, size_t size) {
    if (at >= m_blockAt && at < m_blockAt + m_blockBytes) {
        const auto from = static_cast<size_t>(at - m_blockAt);
        const size_t done = std::min(size, m_blockBytes - from);
        std::memcpy(buffer, &m_block[from], done);
        return done;
    }
    if (size >= kSmallestRead || !m_input.IsSeekable())
        return m_input.ReadAt(m_facts.audioPlace + at, buffer, size);
    m_block.resize(kSmallestRead);
    m_blockBytes = 0;
    const size_t got = m_input.ReadAt(m_facts.audioPlace + at, m_block.data(), kSmallestRead);
    m_blockAt = at;
    m_blockBytes = got;
    return got == 0 ? 0 : ReadAhead(at, buffer, size);
}

void AudioStream::KeepFailure() {
    const std::lock_guard held(m_failureLock);
    m_failure = std::current_exception();
}

bool AudioStream::HasFailed() const {
    const std::lock_guard held(m_failureLock);
    return m_failure != nullptr;
}

void AudioStream::ThrowFailure() {
    std::exception_ptr failure;
    {
        const std::lock_guard held(m_failureLock);
        std::swap(failure, m_failure);
    }
    if (failure) std::rethrow_exception(failure);
}
