#include "riff/TagEntries.h"

#include "riff/ByteOrder.h"

namespace {

constexpr size_t kUnit = 2;  // bytes of a UTF-16 unit, and of the mark
constexpr std::string_view kLittleEndianMark("\xFF\xFE");
constexpr std::string_view kBigEndianMark("\xFE\xFF");  // any other mark counts as little-endian

}  // namespace

bool TagEntryReader::Next() {
    size_t separator = 0;
    while (separator < m_bytes.size() && m_bytes[separator] != '=' && m_bytes[separator] != 0) ++separator;
    if (separator == m_bytes.size() || m_bytes[separator] != '=') return false;
    const size_t start = separator + 1 + kUnit;
    for (size_t end = start; end + kUnit <= m_bytes.size(); end += kUnit) {
        if (m_bytes[end] != 0 || m_bytes[end + 1] != 0) continue;
        m_name = m_bytes.substr(0, separator);
        m_bigEndian = m_bytes.substr(separator + 1, kUnit) == kBigEndianMark;
        m_units = m_bytes.substr(start, end - start);
        m_bytes.remove_prefix(end + kUnit);
        return true;
    }
    return false;
}

void TagEntryReader::Value(std::u16string& value) const {
    const auto* bytes = reinterpret_cast<const uint8_t*>(m_units.data());
    value.resize(m_units.size() / kUnit);
    for (char16_t& unit : value) {
        unit = static_cast<char16_t>(m_bigEndian ? LoadBE16(bytes) : LoadLE16(bytes));
        bytes += kUnit;
    }
}

void AppendTagEntry(std::string& bytes, std::string_view name, std::u16string_view value) {
    bytes += name;
    bytes += '=';
    bytes += kLittleEndianMark;
    for (const char16_t unit : value) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    bytes.append(kUnit, '\0');
}
