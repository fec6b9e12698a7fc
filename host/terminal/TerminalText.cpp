#include "host/terminal/TerminalText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace TerminalText {
namespace {

struct Range {
    char32_t first, last;
};
// Beside C0 and DEL: C1, the Arabic letter mark, the marks, separators and embeddings, the isolates.
constexpr Range kSteering[] = {
    {0x80, 0x9F}, {0x61C, 0x61C}, {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};

bool IsControl(char32_t character) { return character < 0x20 || character == 0x7F; }

bool IsSteering(char32_t character) {
    return std::any_of(std::begin(kSteering), std::end(kSteering), [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

// Of UTF-8 (RFC 3629, section 3): how a sequence begins, and from which character on it is the shortest form.
struct Form {
    uint8_t mask, lead;
    size_t length;
    char32_t least;
};
constexpr Form kForms[] = {
    {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

struct Character {
    size_t length = 0;  // bytes; 0: no UTF-8
    char32_t value = 0;
};

Character FirstOf(std::string_view bytes) {
    const auto lead = static_cast<uint8_t>(bytes.front());
    for (const Form& form : kForms) {
        if ((lead & form.mask) != form.lead || bytes.size() < form.length) continue;
        char32_t value = lead & static_cast<uint8_t>(~form.mask);
        for (const char c : bytes.substr(1, form.length - 1)) {
            const auto next = static_cast<uint8_t>(c);
            if ((next & 0xC0) != 0x80) return {};
            value = value << 6 | (next & 0x3Fu);
        }
        const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
        return value < form.least || surrogate || value > 0x10FFFF ? Character{}
                                                                   : Character{form.length, value};
    }
    return {};
}

// The text with each character that `spell` spells out; what it returns empty stays as it is.
template <class Spell>
std::string Spelled(std::string_view text, const Spell& spell) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const Character next = FirstOf(text);
        const std::string_view bytes = text.substr(0, std::max<size_t>(next.length, 1));
        const std::string spelled = spell(next, bytes.front());
        out += spelled.empty() ? bytes : spelled;
        text.remove_prefix(bytes.size());
    }
    return out;
}

}  // namespace

std::string Printable(std::string_view text) {
    return Spelled(text, [](const Character& next, char first) {
        if (next.length == 0 || IsControl(next.value))
            return fmt::format("\\x{:02X}", static_cast<uint8_t>(first));
        return IsSteering(next.value) ? fmt::format("\\u{:04X}", static_cast<uint32_t>(next.value))
                                      : std::string();
    });
}

std::string PrintableJson(std::string_view json) {
    // Of C0 only the layout's own line ends are left.
    return Spelled(json, [](const Character& next, char) {
        const bool isLeft = next.value == 0x7F || IsSteering(next.value);
        return isLeft ? fmt::format("\\u{:04x}", static_cast<uint32_t>(next.value)) : std::string();
    });
}

bool IsUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const size_t length = FirstOf(bytes).length;
        if (length == 0) return false;
        bytes.remove_prefix(length);
    }
    return true;
}

namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string Base64(std::string_view bytes) {
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += 3) {
        uint32_t group = 0;
        const std::string_view part = bytes.substr(at, 3);
        for (size_t i = 0; i < 3; ++i)
            group = group << 8 | (i < part.size() ? static_cast<uint8_t>(part[i]) : 0u);
        for (size_t i = 0; i < 4; ++i) text += i <= part.size() ? kDigits[group >> (18 - 6 * i) & 0x3F] : '=';
    }
    return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
    const size_t digits = std::min(text.find('='), text.size());
    if (text.size() % 4 != 0 || text.size() - digits > 2 ||
        text.substr(digits).find_first_not_of('=') != text.npos)
        return std::nullopt;
    std::string bytes;
    uint32_t group = 0;
    for (size_t i = 0; i < digits; ++i) {
        const size_t digit = kDigits.find(text[i]);
        if (digit == kDigits.npos) return std::nullopt;
        group = group << 6 | static_cast<uint32_t>(digit);
        if (i % 4 != 0) bytes += static_cast<char>(group >> (6 - 2 * (i % 4)) & 0xFF);
    }
    return bytes;
}

}  // namespace TerminalText
