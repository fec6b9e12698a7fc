#include "riff/BlockSource.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t kFirstBlock = 4096;
constexpr size_t kLargestBlock = 65536;

}  // namespace

bool BlockSource::Read(void* buffer, size_t count) {
    // Nearly every read is of a few bytes that the block holds. A place in front of the block counts as far
    // past it.
    if (count == 0) return true;  // into a buffer that may be null
    const uint64_t from = m_place - m_blockAt;
    if (from < m_blockBytes && count <= m_blockBytes - from) {
        std::memcpy(buffer, m_block.get() + from, count);
        m_place += count;
        return true;
    }
    // What is larger than a block goes past it, straight to where it is wanted.
    const size_t done = count < kLargestBlock ? Peek(buffer, count) : ReadAt(m_place, buffer, count);
    m_place += done;
    return done == count;
}

size_t BlockSource::Peek(void* buffer, size_t count) {
    auto* to = static_cast<uint8_t*>(buffer);
    size_t done = 0;
    const uint64_t start = m_place;
    while (done < count) {
        // Invariant: the block holds m_blockBytes bytes of the file from m_blockAt on. A place outside of it
        // makes the next block begin there, so a skip over audio reads none of it.
        if (m_place < m_blockAt || m_place - m_blockAt >= m_blockBytes) Fill();
        const auto from = static_cast<size_t>(m_place - m_blockAt);
        const size_t taken = std::min(count - done, m_blockBytes - from);
        // The new block is empty: the end, or a place that can't be read.
        if (taken == 0) break;
        std::memcpy(to + done, m_block.get() + from, taken);
        done += taken;
        m_place += taken;
    }
    m_place = start;
    return done;
}

void BlockSource::Fill() {
    // A walk that goes on is likely to go far: each block is twice the one before it, up to the largest.
    if (m_room < kLargestBlock) {
        const size_t room = std::max(kFirstBlock, m_room * 2);
        m_block = std::make_unique_for_overwrite<uint8_t[]>(room);
        m_room = room;
    }
    m_blockAt = m_place;
    m_blockBytes = m_place < m_size ? ReadAt(m_place, m_block.get(), m_room) : 0;
}

bool BlockSource::Skip(uint64_t count) {
    // Also past the end, where every read comes short; but never past 64 bits, which would lead to
    // the start again.
    m_place += std::min(count, UINT64_MAX - m_place);
    return true;
}

bool BlockSource::Tell(uint64_t& place) {
    place = m_place;
    return true;
}
