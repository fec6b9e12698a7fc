#include "host/FormatScan.h"

#include <algorithm>
#include <iterator>

#include "host/FileBytes.h"
#include "riff/ChunkWalk.h"

namespace {

constexpr size_t kCommonSize = 18;              // of the record of AIFF
constexpr uint32_t kExtendedBias = 16383 + 63;  // of an 80-bit number whose mantissa is a whole one

AudioShape ShapeOfWave(const uint8_t* record) { return {LoadLE16(record + 2), LoadLE32(record + 4)}; }

// The rate is an 80-bit number: sign and exponent in 2 bytes, then the mantissa in 8 (IEEE 754, extended).
AudioShape ShapeOfAiff(const uint8_t* record) {
    const uint32_t exponent = LoadBE16(record + 8);
    const uint32_t shift = kExtendedBias - std::min(exponent, kExtendedBias);
    const uint64_t rate = shift < 64 ? LoadBE64(record + 10) >> shift : 0;
    return {LoadBE16(record), static_cast<uint32_t>(std::min<uint64_t>(rate, UINT32_MAX))};
}

struct Container {
    uint32_t id;
    ByteOrder order;
    uint32_t formatChunk;
    size_t recordSize;  // what of the record is looked at
    AudioShape (*shape)(const uint8_t* record);
};
constexpr Container kContainers[] = {
    {ChunkId::kRiff, ByteOrder::Little, ChunkId::kFmt, kPcmFormatSize, ShapeOfWave},
    {ChunkId::kForm, ByteOrder::Big, ChunkId::kCommon, kCommonSize, ShapeOfAiff},
};

}  // namespace

std::optional<AudioShape> ScanShape(const std::string& path) {
    FileBytes file(path);
    uint8_t header[kFileHeaderSize];
    if (!file.Read(header, sizeof header)) return std::nullopt;
    const auto* const container =
        std::find_if(std::begin(kContainers), std::end(kContainers),
                     [&](const Container& row) { return row.id == LoadLE32(header); });
    if (container == std::end(kContainers)) return std::nullopt;
    ChunkWalk walk(file, container->order, sizeof header);
    while (walk.Next()) {
        if (walk.Current().id != container->formatChunk) continue;
        uint8_t record[kCommonSize];
        if (walk.Current().size < container->recordSize || !walk.Read(record, container->recordSize))
            return std::nullopt;
        const AudioShape shape = container->shape(record);
        if (shape.channels == 0 || shape.rate == 0) return std::nullopt;
        return shape;
    }
    return std::nullopt;
}
