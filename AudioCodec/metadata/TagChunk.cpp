#include "AudioCodec/metadata/TagChunk.h"

#include "riff/LittleEndian.h"

namespace {

constexpr size_t kUnit = 2;  // bytes of a UTF-16 unit, and of the mark
constexpr std::string_view kLittleEndianMark("\xFF\xFE");
constexpr std::string_view kBigEndianMark("\xFE\xFF");  // any other mark counts as little-endian

// Units up to the first 0, which ends the value. False if the bytes end before it.
bool TakeValue(std::string_view& bytes, std::u16string& value) {
    const bool swapped = bytes.substr(0, kUnit) == kBigEndianMark;
    for (size_t at = kUnit; at + kUnit <= bytes.size(); at += kUnit) {
        const uint16_t unit = LoadLE16(reinterpret_cast<const uint8_t*>(bytes.data()) + at);
        if (unit == 0) {
            bytes.remove_prefix(at + kUnit);
            return true;
        }
        value += static_cast<char16_t>(swapped ? unit >> 8 | (unit & 0xFF) << 8 : unit);
    }
    return false;
}

}  // namespace

void ParseTagChunk(TagList& tags, std::string_view bytes) {
    for (;;) {
        const size_t separator = bytes.find_first_of(std::string_view("=\0", 2));
        if (separator == std::string_view::npos || bytes[separator] != '=') return;
        CStr name(bytes.data(), static_cast<uint32_t>(separator));
        bytes.remove_prefix(separator + 1);
        std::u16string value;
        if (!TakeValue(bytes, value)) return;
        CStr text(value.data(), static_cast<uint32_t>(value.size()));
        AddTag(tags, name, text);
    }
}

void AppendTagEntry(std::string& bytes, TagEntry& entry) {
    if (const char* const name = entry.name.Narrow()) bytes += name;
    bytes += '=';
    bytes += kLittleEndianMark;
    const std::u16string_view value(entry.value.Wide());
    for (const char16_t unit : value) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    bytes.append(kUnit, '\0');
}
