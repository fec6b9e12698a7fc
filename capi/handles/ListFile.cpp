#include "capi/handles/ListFile.h"

#include <algorithm>
#include <string_view>

#include "capi/Failure.h"
#include "riff/WaveTypes.h"

namespace {

constexpr uint64_t kEntriesMost = uint64_t{64} << 20;

// One frame of 8-bit silence, mono at 8000 Hz, as a file up to its list.
constexpr std::string_view kSilence(
    "RIFF\0\0\0\0WAVE"
    "fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x40\x1F\0\0\x01\0\x08\0"
    "data\x02\0\0\0\x80\x80"
    "LIST\0\0\0\0INFO",
    58);

}  // namespace

ListFile::ListFile(Input& input, const SourceFacts& facts) : m_held(facts.infoEntries), m_blocks(input) {
    if (facts.infoList && input.IsSeekable()) {
        if (facts.infoList->size > kEntriesMost)
            throw Failure(VLW_DAMAGED, "The tags take more than 64 MiB, which isn't read.",
                          input.Label().path);
        m_listAt = facts.infoList->place;
        m_size = facts.infoList->size;
        if (m_listAt + m_size > m_blocks.Size()) m_size = WholeEntries();
    } else {
        m_size = m_held.size();
    }
    static_assert(kSilence.size() == kHeadSize);
    std::copy(kSilence.begin(), kSilence.end(), m_head);
    StoreLE32(m_head + 4, static_cast<uint32_t>(kHeadSize + m_size - kChunkHeaderSize));
    StoreLE32(m_head + kHeadSize - kListTypeSize - 4, static_cast<uint32_t>(m_size + kListTypeSize));
}

// Those in front of the one that the end of the source cuts off.
uint64_t ListFile::WholeEntries() {
    uint64_t end = m_listAt;
    m_blocks.MoveTo(end);
    for (uint8_t header[kChunkHeaderSize]; m_blocks.Read(header, sizeof header); m_blocks.MoveTo(end)) {
        const uint64_t size = LoadLE32(header + 4);
        const uint64_t next = end + kChunkHeaderSize + size + (size & 1);
        if (next > m_blocks.Size()) break;
        end = next;
    }
    return end - m_listAt;
}

int32_t ListFile::Read(void* buffer, uint32_t size, uint32_t* done) {
    const uint64_t left = SizeOfStream() - std::min(SizeOfStream(), m_place);
    *done = 0;
    const auto count = static_cast<uint32_t>(std::min<uint64_t>(size, left));
    auto* to = static_cast<uint8_t*>(buffer);
    const uint64_t ofHead = m_place < kHeadSize ? std::min<uint64_t>(count, kHeadSize - m_place) : 0;
    std::copy_n(m_head + std::min<uint64_t>(m_place, kHeadSize), ofHead, to);
    try {
        if (count > ofHead) ReadEntries(m_place + ofHead - kHeadSize, to + ofHead, count - ofHead);
    } catch (...) {  // nothing leaves to the module, which would take it for the end
        m_failure = std::current_exception();
        return PLATFORM_FAILED;
    }
    m_place += count;
    *done = count;
    return PLATFORM_OK;
}

void ListFile::ReadEntries(uint64_t at, uint8_t* buffer, size_t size) {
    if (!m_held.empty()) {
        std::copy_n(m_held.begin() + static_cast<std::ptrdiff_t>(at), size, buffer);
        return;
    }
    m_blocks.MoveTo(m_listAt + at);
    // The size was what is there; a source that has become shorter meanwhile has failed.
    if (!m_blocks.Read(buffer, size)) throw Failure(VLW_SYSTEM, "The source has become shorter.");
}

void ListFile::ThrowFailure() const {
    if (m_failure) std::rethrow_exception(m_failure);
}
