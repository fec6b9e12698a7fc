// An identifier as a text, the way back from MakeGuid.
#pragma once

#include <cstdio>
#include <string>

#include "platform/base/Guid.h"

// In braces: "{16B5817D-48BF-4498-8D32-5EC4F75B0A3A}". Throws std::bad_alloc.
inline std::string BracedText(const GUID& id) {
    constexpr size_t kSize = 39;  // bytes, with the terminator
    char text[kSize] = "";
    const uint8_t* const d = id.Data4;
    std::snprintf(text, kSize, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", id.Data1,
                  unsigned{id.Data2}, unsigned{id.Data3}, unsigned{d[0]}, unsigned{d[1]}, unsigned{d[2]},
                  unsigned{d[3]}, unsigned{d[4]}, unsigned{d[5]}, unsigned{d[6]}, unsigned{d[7]});
    return text;
}
