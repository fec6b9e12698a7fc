#include "platform/media/AiffHead.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "riff/ChunkWalk.h"
#include "riff/SpanSource.h"

namespace {

constexpr size_t kTagPlace = 18;  // in the chunk: channels, frames, bits and rate stand before it
constexpr size_t kTagSize = 4;
constexpr uint32_t kLittleEndianTags[] = {FourCC("sowt"), FourCC("42n1"), FourCC("23ni")};
constexpr uint32_t kBigEndianTag = FourCC("NONE");
constexpr AVCodecID kOrders[][2] = {
    // big-endian, little-endian
    {AV_CODEC_ID_PCM_S16BE, AV_CODEC_ID_PCM_S16LE},
    {AV_CODEC_ID_PCM_S24BE, AV_CODEC_ID_PCM_S24LE},
    {AV_CODEC_ID_PCM_S32BE, AV_CODEC_ID_PCM_S32LE},
};

// Where the tag of the audio's coding stands; nothing where it isn't among the bytes.
std::optional<uint64_t> FindTag(std::span<const uint8_t> head) {
    SpanSource source(head);
    uint8_t form[kFileHeaderSize];
    if (!source.Read(form, sizeof form) || LoadLE32(form + 8) != ChunkId::kAifc) return std::nullopt;
    ChunkWalk walk(source, ByteOrder::Big, sizeof form);
    while (walk.Next()) {
        if (walk.Current().id != ChunkId::kCommon) continue;
        uint8_t record[kTagPlace + kTagSize];
        if (walk.Current().size < sizeof record || !walk.Read(record, sizeof record)) return std::nullopt;
        return walk.Current().Content() + kTagPlace;
    }
    return std::nullopt;
}

}  // namespace

bool MakeBigEndian(std::span<uint8_t> head) {
    const std::optional<uint64_t> place = FindTag(head);
    if (!place) return false;
    uint8_t* const tag = head.data() + *place;
    const uint32_t present = LoadLE32(tag);
    if (std::none_of(std::begin(kLittleEndianTags), std::end(kLittleEndianTags),
                     [&](uint32_t known) { return known == present; }))
        return false;
    StoreLE32(tag, kBigEndianTag);
    return true;
}

AVCodecID LittleEndianOf(AVCodecID codec) {
    for (const auto& [big, little] : kOrders)
        if (codec == big) return little;
    return codec;
}
