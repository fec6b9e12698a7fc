#include "platform/com/TaskText.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {
constexpr size_t kPrefixSize = 8;  // the length fills the last 4 bytes; the text lies aligned after it
}

WCHAR* SysAllocString(const WCHAR* text) {
    if (!text) return nullptr;
    const size_t bytes = std::char_traits<WCHAR>::length(text) * sizeof(WCHAR);
    if (bytes > std::numeric_limits<uint32_t>::max()) return nullptr;
    auto* block = static_cast<uint8_t*>(std::malloc(kPrefixSize + bytes + sizeof(WCHAR)));
    if (!block) return nullptr;
    const auto length = static_cast<uint32_t>(bytes);
    std::memcpy(block + kPrefixSize - sizeof(length), &length, sizeof(length));
    std::memcpy(block + kPrefixSize, text, bytes + sizeof(WCHAR));
    return reinterpret_cast<WCHAR*>(block + kPrefixSize);
}

void SysFreeString(WCHAR* text) {
    if (text) std::free(reinterpret_cast<uint8_t*>(text) - kPrefixSize);
}
