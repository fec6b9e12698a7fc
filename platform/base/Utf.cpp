#include "platform/base/Utf.h"

#include <cstdint>

namespace Utf {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kEscapedByte = 0xDC00;  // + 0x80 to 0xFF: a byte that was no UTF-8

struct Sequence {
    uint8_t mask, lead;  // lead byte: (byte & mask) == lead
    uint8_t length;
    char32_t least;  // below it the form is overlong
};
constexpr Sequence kSequences[] = {
    {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

// The character at the start of the bytes and its length; length 0 where they are no UTF-8.
size_t Decode(std::string_view bytes, char32_t& character) {
    const auto first = static_cast<uint8_t>(bytes[0]);
    for (const Sequence& form : kSequences) {
        if ((first & form.mask) != form.lead) continue;
        if (bytes.size() < form.length) return 0;
        character = first & static_cast<uint8_t>(~form.mask);
        for (size_t i = 1; i < form.length; ++i) {
            const auto next = static_cast<uint8_t>(bytes[i]);
            if ((next & 0xC0) != 0x80) return 0;
            character = character << 6 | (next & 0x3Fu);
        }
        const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
        return character < form.least || surrogate || character > 0x10FFFF ? 0 : form.length;
    }
    return 0;
}

void AppendUtf8(std::string& out, char32_t character) {
    if (character < 0x80) {
        out += static_cast<char>(character);
        return;
    }
    const int tail = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr uint8_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kLead[tail] | character >> 6 * tail);
    for (int i = tail - 1; i >= 0; --i) out += static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
}

constexpr bool IsHigh(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool IsLow(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace

std::u16string FromUtf8(std::string_view bytes) {
    std::u16string out;
    out.reserve(bytes.size());
    while (!bytes.empty()) {
        char32_t character = 0;
        size_t length = Decode(bytes, character);
        if (length == 0) {
            length = 1;
            out += static_cast<char16_t>(kEscapedByte + static_cast<uint8_t>(bytes[0]));
        } else if (character < 0x10000) {
            out += static_cast<char16_t>(character);
        } else {
            out += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
        }
        bytes.remove_prefix(length);
    }
    return out;
}

std::string ToUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (IsHigh(unit) && i + 1 < text.size() && IsLow(text[i + 1])) {
            AppendUtf8(out, 0x10000 + ((unit & 0x3FFu) << 10) + (text[++i] & 0x3FFu));
        } else if (unit >= kEscapedByte + 0x80 && unit <= kEscapedByte + 0xFF) {
            out += static_cast<char>(unit - kEscapedByte);
        } else {
            AppendUtf8(out, IsHigh(unit) || IsLow(unit) ? kReplacement : unit);
        }
    }
    return out;
}

}  // namespace Utf
