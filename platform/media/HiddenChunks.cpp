#include "platform/media/HiddenChunks.h"

#include <algorithm>
#include <iterator>

#include "riff/ByteOrder.h"
#include "riff/WaveTypes.h"

namespace {

constexpr uint32_t kSound = FourCC("SSND");
constexpr uint32_t kWanted[] = {ChunkId::kFmt,  FourCC("ds64"),   ChunkId::kFact,
                                ChunkId::kData, ChunkId::kCommon, FourCC("FVER"),
                                FourCC("wave"), FourCC("CHAN"),   kSound};
constexpr uint32_t kBigEndianFiles[] = {ChunkId::kForm, FourCC("RIFX")};
constexpr uint32_t kMostWanted = 256;          // of them; a handful is usual
constexpr uint32_t kLargestTrue = 0x7FFFEFFF;  // of audio; above it stand numbers for "not told"

template <size_t count>
bool IsOneOf(const uint32_t (&ids)[count], uint32_t id) {
    return std::find(std::begin(ids), std::end(ids), id) != std::end(ids);
}

}  // namespace

void HiddenChunks::Begin(std::span<const uint8_t> head) {
    m_isActive = head.size() >= kFileHeaderSize;
    if (!m_isActive) return;
    m_order = IsOneOf(kBigEndianFiles, LoadLE32(head.data())) ? ByteOrder::Big : ByteOrder::Little;
    m_next = kFileHeaderSize;
}

size_t HiddenChunks::Pass(uint64_t place, std::span<uint8_t> bytes) {
    if (m_isActive && place == 0) Begin(bytes);
    m_isActive = m_isActive && m_next >= place;
    m_run = nullptr;  // what was given on can't be changed any more
    const uint64_t end = place + bytes.size();
    while (m_isActive && m_next + kChunkHeaderSize <= end) {
        uint8_t* const header = &bytes[static_cast<size_t>(m_next - place)];
        const uint32_t id = LoadLE32(header);
        const uint32_t size = SizeIn(header);
        const bool isAudio = id == ChunkId::kData || id == kSound;
        if (isAudio && (size == 0 || size > kLargestTrue)) {
            End();
            break;
        }
        const uint64_t content = m_next + kChunkHeaderSize;
        m_next = content + size + (size & 1);
        if (id == ChunkId::kData || (IsOneOf(kWanted, id) && ++m_wanted <= kMostWanted))
            m_run = nullptr;
        else
            Hide(header, content, m_next);
    }
    return m_isActive && m_next < end ? static_cast<size_t>(m_next - place) : bytes.size();
}

uint32_t HiddenChunks::SizeIn(const uint8_t* header) const {
    return m_order == ByteOrder::Big ? LoadBE32(header + 4) : LoadLE32(header + 4);
}

// A chunk between these places.
void HiddenChunks::Hide(uint8_t* header, uint64_t content, uint64_t end) {
    const uint64_t grown = end - m_runContent;
    if (m_run && grown < UINT32_MAX) {
        (m_order == ByteOrder::Big ? StoreBE32 : StoreLE32)(m_run + 4, static_cast<uint32_t>(grown));
        return;
    }
    StoreLE32(header, ChunkId::kJunk);
    m_run = header;
    m_runContent = content;
}
