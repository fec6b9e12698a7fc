// What the fuzzer made, as a script: its first bytes are numbers that say what is to be done, the rest is the
// file that it is done to. A script that has ended goes on as zeros, so that none is too short.
//
// Decisions: the numbers in front of a file are kHead bytes, so that a seed is so many bytes and any file.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "riff/ByteOrder.h"
#include "tests/support/FailingAllocator.h"

// Bytes of the script in front of a file, the same for all targets.
inline constexpr size_t kHead = 128;

// Ends the run with a sentence; the fuzzer keeps the bytes that led here.
inline void Check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "ERROR: it doesn't hold that %s\n", what);
    std::abort();
}

class ScriptBytes {
public:
    ScriptBytes(const uint8_t* bytes, size_t size) : m_bytes(bytes), m_left(size) {}

    bool IsOver() const { return m_left == 0; }
    uint32_t Next() {
        if (m_left == 0) return 0;
        --m_left;
        return *m_bytes++;
    }
    uint32_t Next16() {
        const uint32_t low = Next();
        return Next() << 8 | low;
    }
    uint32_t Next32() {
        const uint32_t low = Next16();
        return Next16() << 16 | low;
    }
    // Mostly small, now and then at a bound of 16 or 32 bits.
    uint32_t NextNumber() {
        constexpr uint32_t kBounds[] = {0, 1, 0x7FFF, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
        const uint32_t kind = Next();
        return kind < 240 ? kind : kind < 248 ? Next16() : kBounds[kind - 248];
    }
    // The next bytes, as many as there are.
    std::string Text(size_t count) {
        const size_t taken = std::min(count, m_left);
        std::string text(reinterpret_cast<const char*>(m_bytes), taken);
        m_bytes += taken;
        m_left -= taken;
        return text;
    }
    // Up to 255 characters, none of them zero; surrogates come in pairs.
    std::u16string Wide() {
        std::u16string text;
        for (uint32_t left = Next(); left != 0; --left) {
            const uint32_t byte = Next();  // beyond ASCII now and then
            const uint32_t unit = std::max(byte < 0xF0 ? byte : Next16(), 1U);
            const bool isSurrogate = unit >= 0xD800 && unit < 0xE000;
            text += static_cast<char16_t>(isSurrogate ? unit & 0xDBFF : unit);
            if (isSurrogate) text += static_cast<char16_t>(unit | 0xDC00);
        }
        return text;
    }
    // A script of its own out of the next bytes.
    ScriptBytes Part(size_t count) {
        const size_t taken = std::min(count, m_left);
        ScriptBytes part(m_bytes, taken);
        m_bytes += taken;
        m_left -= taken;
        return part;
    }
    std::vector<uint8_t> Rest() const { return {m_bytes, m_bytes + m_left}; }

private:
    const uint8_t* m_bytes;
    size_t m_left;
};

// The allocation that a byte of the script lets fail, for as long as this stands: none for half of all bytes,
// else one of the next 128, alone or with all after it.
class FailureByScript {
public:
    explicit FailureByScript(ScriptBytes& script) {
        const uint32_t byte = script.Next();
        if (byte >= 128) m_heap.emplace(static_cast<int>(byte & 127), script.Next() % 2 == 0);
    }
    bool HasFailed() const { return m_heap && FailingAllocator::HasFailed(); }

private:
    std::optional<FailingAllocator> m_heap;
};
