#include "platform/media/AiffHead.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}

#include <algorithm>
#include <iterator>

namespace {

constexpr size_t kFormHead = 12;  // id, size, type
constexpr size_t kChunkHead = 8;  // id, size
constexpr size_t kTagPlace = 18;  // in the chunk: channels, frames, bits and rate stand in front
constexpr size_t kTagSize = 4;
constexpr uint32_t kLittleEndianTags[] = {MKBETAG('s', 'o', 'w', 't'), MKBETAG('4', '2', 'n', '1'),
                                          MKBETAG('2', '3', 'n', 'i')};
constexpr AVCodecID kOrders[][2] = {
    // big-endian, little-endian
    {AV_CODEC_ID_PCM_S16BE, AV_CODEC_ID_PCM_S16LE},
    {AV_CODEC_ID_PCM_S24BE, AV_CODEC_ID_PCM_S24LE},
    {AV_CODEC_ID_PCM_S32BE, AV_CODEC_ID_PCM_S32LE},
};

// The content of the chunk that describes the audio, as far as it is there.
std::span<uint8_t> CommonChunk(std::span<uint8_t> head) {
    uint64_t place = kFormHead;
    while (place + kChunkHead <= head.size()) {
        const auto chunk = head.subspan(place);
        const uint32_t size = AV_RB32(chunk.data() + 4);
        if (AV_RB32(chunk.data()) == MKBETAG('C', 'O', 'M', 'M'))
            return chunk.subspan(kChunkHead, std::min<size_t>(size, chunk.size() - kChunkHead));
        place += kChunkHead + uint64_t{size} + size % 2;
    }
    return {};
}

}  // namespace

bool MakeBigEndian(std::span<uint8_t> head) {
    if (head.size() < kFormHead || AV_RB32(head.data() + 8) != MKBETAG('A', 'I', 'F', 'C')) return false;
    const std::span<uint8_t> common = CommonChunk(head);
    if (common.size() < kTagPlace + kTagSize) return false;
    uint8_t* const tag = common.data() + kTagPlace;
    const uint32_t present = AV_RB32(tag);
    if (std::none_of(std::begin(kLittleEndianTags), std::end(kLittleEndianTags),
                     [&](uint32_t known) { return known == present; }))
        return false;
    AV_WB32(tag, MKBETAG('N', 'O', 'N', 'E'));
    return true;
}

AVCodecID LittleEndianOf(AVCodecID codec) {
    for (const auto& [big, little] : kOrders)
        if (codec == big) return little;
    return codec;
}
