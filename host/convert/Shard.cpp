#include "host/convert/Shard.h"

#include <fmt/format.h>

#include <charconv>

#include "host/base/Failure.h"

namespace {

// FNV-1a with 64 bits (Fowler, Noll and Vo), its upper half folded into the lower one.
uint64_t Hash(std::string_view bytes) {
    uint64_t hash = 0xCBF29CE484222325;
    for (const char c : bytes) {
        hash ^= static_cast<uint8_t>(c);
        hash *= 0x100000001B3;
    }
    return hash ^ hash >> 32;
}

bool Number(std::string_view text, uint64_t& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

Shard::Shard(const std::string& text) {
    if (text.empty()) return;
    const std::string_view all = text;
    const size_t slash = all.find('/');
    uint64_t index = 0;
    if (slash == all.npos || !Number(all.substr(0, slash), index) ||
        !Number(all.substr(slash + 1), m_count) || index < 1 || index > m_count)
        throw UsageFailure(fmt::format("\"{}\" is no shard; \"2/3\" is the second of three.", text));
    m_index = index - 1;
}

bool Shard::Has(std::string_view name) const { return m_count == 1 || Hash(name) % m_count == m_index; }
