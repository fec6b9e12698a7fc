#include "AudioCodec/metadata/TagList.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

constexpr char16_t kLongLength = 0xFFFF;  // the length follows in two units, the low one first
constexpr size_t kLeastEntryBytes = 5;    // of an entry without name and value in a file

void PutLength(std::u16string& units, size_t length) {
    if (length < kLongLength) {
        units += static_cast<char16_t>(length);
        return;
    }
    units += kLongLength;
    units += static_cast<char16_t>(length & 0xFFFF);
    units += static_cast<char16_t>(length >> 16);
}

size_t TakeLength(const char16_t*& at) {
    const size_t length = *at++;
    if (length < kLongLength) return length;
    const size_t low = *at++;
    return low | size_t{*at++} << 16;
}

// Reads the entry at `at` and moves past it.
TagEntry TakeEntry(const char16_t*& at) {
    const size_t nameBytes = TakeLength(at);
    const size_t valueUnits = TakeLength(at);
    const TagEntry entry{{reinterpret_cast<const char*>(at), nameBytes},
                         {at + (nameBytes + 1) / 2, valueUnits}};
    at += (nameBytes + 1) / 2 + valueUnits + 1;
    return entry;
}

struct Capitals {
    uint8_t first, last;
    uint8_t distance;  // to the small letters
};
constexpr Capitals kCapitals[] = {
    {'A', 'Z', 0x20},   {0xC0, 0xD6, 0x20}, {0xD8, 0xDE, 0x20},
    {0x8A, 0x8A, 0x10}, {0x8C, 0x8C, 0x10}, {0x8E, 0x8E, 0x10},  // S and Z with caron, OE
    {0x9F, 0x9F, 0x60},                                          // Y with diaeresis
};
// Each character of the code page in lower case.
constexpr auto kLowered = [] {
    std::array<char, 256> lowered{};
    for (size_t byte = 0; byte < lowered.size(); ++byte) lowered[byte] = static_cast<char>(byte);
    for (const auto& [first, last, distance] : kCapitals)
        for (size_t byte = first; byte <= last; ++byte) lowered[byte] = static_cast<char>(byte + distance);
    return lowered;
}();

}  // namespace

TagEntry TagList::Iterator::operator*() const {
    const char16_t* at = m_at;
    return TakeEntry(at);
}

TagList::Iterator& TagList::Iterator::operator++() {
    TakeEntry(m_at);
    return *this;
}

void TagList::clear() { *this = {}; }

void TagList::Reserve(size_t bytes) {
    m_units.reserve(m_units.size() + bytes / sizeof(char16_t) + bytes / kLeastEntryBytes + 1);
}

void TagList::Append(std::string_view name, std::u16string_view value) {
    constexpr size_t kLengthUnits = 6;
    const size_t nameUnits = (name.size() + 1) / 2;
    const size_t needed = m_units.size() + kLengthUnits + nameUnits + value.size() + 1;
    if (needed > m_units.capacity()) m_units.reserve(std::max(needed, m_units.capacity() * 2));
    PutLength(m_units, name.size());
    PutLength(m_units, value.size());
    const size_t place = m_units.size();
    m_units.append(nameUnits, u'\0');
    std::memcpy(m_units.data() + place, name.data(), name.size());
    m_units += value;
    m_units += u'\0';
}

std::string LoweredTagName(std::string_view name) {
    std::string lowered(name);
    for (char& c : lowered) c = kLowered[static_cast<uint8_t>(c)];
    return lowered;
}

void AddTag(TagList& tags, std::string_view name, std::u16string_view value) {
    value = value.substr(0, value.find_last_not_of(u' ') + 1);
    value.remove_prefix(std::min(value.find_first_not_of(u' '), value.size()));
    tags.Append(LoweredTagName(name), value);
}
