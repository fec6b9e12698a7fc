// Bytes in memory as a source. Borrows them.
#pragma once

#include <algorithm>
#include <span>

#include "riff/ByteSource.h"

class SpanSource final : public ByteSource {
public:
    explicit SpanSource(std::span<const uint8_t> bytes) : m_bytes(bytes) {}

    bool Read(void* buffer, size_t count) override {
        if (!Holds(count)) return false;
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_place), count,
                    static_cast<uint8_t*>(buffer));
        m_place += count;
        return true;
    }
    bool Skip(uint64_t count) override {
        m_place = Holds(count) ? m_place + count : m_bytes.size();
        return true;
    }
    bool Holds(uint64_t count) override { return count <= m_bytes.size() - m_place; }
    bool Tell(uint64_t& place) override {
        place = m_place;
        return true;
    }

private:
    std::span<const uint8_t> m_bytes;
    uint64_t m_place = 0;  // at most the size: past the end there is nothing to tell apart
};
