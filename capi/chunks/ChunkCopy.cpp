#include "capi/chunks/ChunkCopy.h"

#include <algorithm>

#include "capi/Failure.h"
#include "riff/WaveTypes.h"

namespace {
constexpr size_t kCopiedBytes = 65536;  // bytes
}

void ChunkCopy::Header(uint32_t id, uint32_t size) {
    uint8_t header[kChunkHeaderSize] = {};
    StoreLE32(header, id);
    StoreLE32(header + 4, size);
    m_put(header, sizeof header);
}

void ChunkCopy::Pad(uint64_t size) {
    if (size & 1) m_put("", 1);
}

void ChunkCopy::Read(uint64_t place, void* buffer, size_t count) {
    // What is read was there when the source was looked at.
    m_blocks.MoveTo(place);
    if (!m_blocks.Read(buffer, count))
        throw Failure(VLW_SYSTEM, m_input.Label().First() + " has become shorter.", m_input.Label().path);
}

void ChunkCopy::Range(uint64_t place, uint64_t size) {
    m_block.resize(kCopiedBytes);
    while (size != 0) {
        const auto step = static_cast<size_t>(std::min<uint64_t>(size, kCopiedBytes));
        Read(place, m_block.data(), step);
        m_put(m_block.data(), step);
        place += step;
        size -= step;
    }
}

void ChunkCopy::Records(uint64_t place, uint64_t count, size_t recordSize, const Patch& patch) {
    m_block.resize(std::max(kCopiedBytes, recordSize));
    while (count != 0) {
        const auto step = static_cast<size_t>(std::min<uint64_t>(count, m_block.size() / recordSize));
        Read(place, m_block.data(), step * recordSize);
        for (size_t i = 0; i < step; ++i) patch(&m_block[i * recordSize]);
        m_put(m_block.data(), step * recordSize);
        place += step * recordSize;
        count -= step;
    }
}
