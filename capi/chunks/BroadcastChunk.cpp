#include "capi/chunks/BroadcastChunk.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t kFixedSize = 602;  // of the fields before the coding history
constexpr size_t kTimeAt = 338;     // of the first frame since midnight: 64 bits, the low half first
constexpr size_t kTimeSize = 8;
constexpr size_t kHistoryBlock = 4096;

struct History {
    uint64_t size = 0;  // of the text
    bool endsALine = true;
};

History FindHistory(const CarriedChunk& chunk, ChunkCopy& copy) {
    History history;
    const uint64_t size = chunk.Size() - kFixedSize;
    char block[kHistoryBlock];
    while (history.size < size) {
        const auto step = static_cast<size_t>(std::min<uint64_t>(size - history.size, sizeof block));
        copy.Read(chunk.Place() + kFixedSize + history.size, block, step);
        const void* const end = std::memchr(block, 0, step);
        const size_t text = end ? static_cast<size_t>(static_cast<const char*>(end) - block) : step;
        if (text != 0) history.endsALine = block[text - 1] == '\n';
        history.size += text;
        if (end) break;
    }
    return history;
}

bool GetsALine(const CarriedChunk& chunk) {
    return !chunk.rules.history.empty() && chunk.Size() >= kFixedSize;
}

std::string LineOf(const History& history, const CarriedChunk& chunk) {
    return (history.endsALine ? "" : "\r\n") + chunk.rules.history;
}

}  // namespace

uint64_t SizeOfBroadcast(const CarriedChunk& chunk, ChunkCopy& copy) {
    if (!GetsALine(chunk)) return chunk.Size();
    const History history = FindHistory(chunk, copy);
    return kFixedSize + history.size + LineOf(history, chunk).size();
}

void CopyBroadcast(const CarriedChunk& chunk, ChunkCopy& copy) {
    const FrameScale& scale = chunk.rules.scale;
    uint64_t put = 0;
    if (!scale.IsSame() && chunk.Size() >= kTimeAt + kTimeSize) {
        copy.Range(chunk.Place(), kTimeAt);
        copy.Records(chunk.Place() + kTimeAt, 1, kTimeSize, [&](uint8_t* time) {
            const uint64_t was = uint64_t{LoadLE32(time + 4)} << 32 | LoadLE32(time);
            const uint64_t is = scale.Time(was);
            StoreLE32(time, static_cast<uint32_t>(is));
            StoreLE32(time + 4, static_cast<uint32_t>(is >> 32));
        });
        put = kTimeAt + kTimeSize;
    }
    if (!GetsALine(chunk)) {
        copy.Range(chunk.Place() + put, chunk.Size() - put);
        return;
    }
    const History history = FindHistory(chunk, copy);
    const std::string line = LineOf(history, chunk);
    copy.Range(chunk.Place() + put, kFixedSize + history.size - put);
    copy.Bytes(line.data(), line.size());
}
