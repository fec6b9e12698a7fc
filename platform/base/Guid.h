// The 16-byte identifier of classes and interfaces, and how one is written in code.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

// An identifier of 16 bytes.
struct GUID {
    // Its parts, as its text has them between hyphens; the last one has two of those.
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16 && std::is_trivially_copyable_v<GUID>);

// Compares values over all 16 bytes; two copies of one identifier are equal.
inline bool operator==(const GUID& a, const GUID& b) { return std::memcmp(&a, &b, sizeof(GUID)) == 0; }
inline bool operator!=(const GUID& a, const GUID& b) { return !(a == b); }

namespace guid_text {

// Not constexpr on purpose: reached only by a text that is no identifier, where it stops the compilation.
inline void Malformed() {}

constexpr uint64_t HexDigits(const char*& text, int digits) {
    uint64_t value = 0;
    for (; digits > 0; --digits, ++text) {
        const char c = *text;
        const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
        if (digit < 0) Malformed();
        value = value << 4 | static_cast<uint64_t>(digit);
    }
    return value;
}

constexpr void Hyphen(const char*& text) {
    if (*text++ != '-') Malformed();
}

}  // namespace guid_text

// An identifier from its text, "16B5817D-48BF-4498-8D32-5EC4F75B0A3A", for constants: in a constexpr variable
// a slip in the text does not compile.
constexpr GUID MakeGuid(const char (&text)[37]) {
    const char* at = text;
    GUID guid{};
    guid.Data1 = static_cast<uint32_t>(guid_text::HexDigits(at, 8));
    guid_text::Hyphen(at);
    guid.Data2 = static_cast<uint16_t>(guid_text::HexDigits(at, 4));
    guid_text::Hyphen(at);
    guid.Data3 = static_cast<uint16_t>(guid_text::HexDigits(at, 4));
    guid_text::Hyphen(at);
    for (int i = 0; i < 8; ++i) {
        if (i == 2) guid_text::Hyphen(at);
        guid.Data4[i] = static_cast<uint8_t>(guid_text::HexDigits(at, 2));
    }
    return guid;
}

}  // namespace vlacwav3
