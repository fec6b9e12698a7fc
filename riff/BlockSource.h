// A file as a source: its bytes come in blocks, so that a million small chunks cost one read of the system
// for each 64 KiB of them, and memory stays flat. An adapter says how a block is read. The block is never
// asked for anew: for the time of one walk, over a file that nobody writes to.
//
// Decisions: blocks begin with 4 KiB and double, so that an ordinary head is one small read.
#pragma once

#include <memory>

#include "riff/ByteSource.h"

class BlockSource : public ByteSource {
public:
    bool Read(void* buffer, size_t count) override;  // may throw bad_alloc
    bool Skip(uint64_t count) override;
    bool Holds(uint64_t count) override { return m_place <= m_size && count <= m_size - m_place; }
    bool Tell(uint64_t& place) override;

    // Reads at most so many bytes without moving on, fewer where the file ends or can't be read.
    // May throw bad_alloc.
    size_t Peek(void* buffer, size_t count);

    void MoveTo(uint64_t place) { m_place = place; }
    uint64_t Place() const { return m_place; }
    uint64_t Size() const { return m_size; }  // of the file, in bytes

protected:
    explicit BlockSource(uint64_t size) : m_size(size) {}

    // Reads at a place, at most `count` bytes; returns how many, fewer at the end of the file and where it
    // can't be read.
    virtual size_t ReadAt(uint64_t place, void* buffer, size_t count) = 0;

private:
    void Fill();

    const uint64_t m_size;
    uint64_t m_place = 0;
    std::unique_ptr<uint8_t[]> m_block;
    size_t m_room = 0;        // bytes that m_block has room for
    uint64_t m_blockAt = 0;   // its place in the file
    size_t m_blockBytes = 0;  // how many of it are there
};
