#include "host/FormatScan.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "riff/LittleEndian.h"

namespace {

constexpr size_t kHeaderSize = 8;  // id and size
constexpr size_t kRecordSize = 18;
constexpr uint32_t kExtendedBias = 16383 + 63;  // of an 80-bit number whose mantissa is a whole one

uint64_t LoadBig(const uint8_t* bytes, size_t count) {
    uint64_t value = 0;
    for (size_t i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

AudioShape ShapeOfWave(const uint8_t* record) { return {LoadLE16(record + 2), LoadLE32(record + 4)}; }

// The rate is an 80-bit number: sign and exponent in 2 bytes, then the mantissa in 8 (IEEE 754, extended).
AudioShape ShapeOfAiff(const uint8_t* record) {
    const auto exponent = static_cast<uint32_t>(LoadBig(record + 8, 2));
    const uint32_t shift = kExtendedBias - std::min(exponent, kExtendedBias);
    const uint64_t rate = shift < 64 ? LoadBig(record + 10, 8) >> shift : 0;
    return {static_cast<uint32_t>(LoadBig(record, 2)),
            static_cast<uint32_t>(std::min<uint64_t>(rate, UINT32_MAX))};
}

uint32_t SizeOfWave(const uint8_t* bytes) { return LoadLE32(bytes); }
uint32_t SizeOfAiff(const uint8_t* bytes) { return static_cast<uint32_t>(LoadBig(bytes, 4)); }

struct Container {
    uint32_t id;
    uint32_t formatChunk;
    size_t leastSize;  // of the record
    uint32_t (*size)(const uint8_t* bytes);
    AudioShape (*shape)(const uint8_t* record);
};
constexpr Container kContainers[] = {
    {FourCC("RIFF"), FourCC("fmt "), 16, SizeOfWave, ShapeOfWave},
    {FourCC("FORM"), FourCC("COMM"), kRecordSize, SizeOfAiff, ShapeOfAiff},
};

}  // namespace

std::optional<AudioShape> ScanShape(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    uint8_t bytes[kRecordSize] = {};
    const auto read = [&](size_t count) {
        return static_cast<bool>(
            file.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count)));
    };
    if (!read(12)) return std::nullopt;
    const auto* const container =
        std::find_if(std::begin(kContainers), std::end(kContainers),
                     [&](const Container& row) { return row.id == LoadLE32(bytes); });
    if (container == std::end(kContainers)) return std::nullopt;
    while (read(kHeaderSize)) {
        const uint32_t size = container->size(bytes + 4);
        if (LoadLE32(bytes) != container->formatChunk) {
            file.seekg(int64_t{size} + (size & 1), std::ios::cur);
            continue;
        }
        if (size < container->leastSize || !read(container->leastSize)) return std::nullopt;
        const AudioShape shape = container->shape(bytes);
        if (shape.channels == 0 || shape.rate == 0) return std::nullopt;
        return shape;
    }
    return std::nullopt;
}
