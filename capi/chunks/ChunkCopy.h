// Bytes of a source's chunks on their way into a file, by the block: as they are, or record by record with
// numbers set right. Throws what reading throws, and what `put` does. One thread at a time.
#pragma once

#include <functional>
#include <vector>

#include "capi/input/InputSource.h"

class ChunkCopy {
public:
    // Takes so many of the next bytes.
    using Put = std::function<void(const void* bytes, size_t count)>;
    using Patch = std::function<void(uint8_t* record)>;

    // Both are borrowed.
    ChunkCopy(Input& input, const Put& put) : m_input(input), m_blocks(input), m_put(put) {}

    void Bytes(const void* bytes, size_t count) { m_put(bytes, count); }
    void Header(uint32_t id, uint32_t size);
    void Pad(uint64_t size);  // after content of that size
    void Range(uint64_t place, uint64_t size);
    // As many records, each through `patch`.
    void Records(uint64_t place, uint64_t count, size_t recordSize, const Patch& patch);
    // Reads without putting.
    void Read(uint64_t place, void* buffer, size_t count);

private:
    const Input& m_input;
    InputBlocks m_blocks;  // many chunks are of a few bytes
    const Put& m_put;
    std::vector<uint8_t> m_block;
};
