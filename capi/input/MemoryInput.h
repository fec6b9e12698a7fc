// Bytes of the program, which stay its own.
#pragma once

#include <algorithm>
#include <cstring>

#include "capi/input/Input.h"

class MemoryInput final : public Input {
public:
    MemoryInput(const void* bytes, size_t size)
        : Input(size, FileLabel::OfSource()), m_bytes(static_cast<const char*>(bytes)), m_count(size) {}

private:
    size_t Get(uint64_t place, void* buffer, size_t count) override {
        if (place >= m_count) return 0;
        const size_t done = std::min<uint64_t>(count, m_count - place);
        std::memcpy(buffer, m_bytes + place, done);
        return done;
    }

    const char* const m_bytes;
    const size_t m_count;
};
