// Attributes that the library sets on the module's objects, so that they do more than a host of old expects.
#pragma once

#include <cstdint>

#include "capi/vlwav.h"

inline constexpr uint32_t kInfoEncodingAttribute = 0x32050101;     // LONG
inline constexpr uint32_t kEditChangedOnlyAttribute = 0x30050102;  // BOOL

// The attribute's value for how a program wants texts to be read and written.
constexpr uint32_t InfoEncodingOf(vlw_text text) {
    switch (text) {
        case VLW_TEXT_1252:
            return 0;
        case VLW_TEXT_UTF8:
            return 1;
        case VLW_TEXT_AUTO:
            break;
    }
    return 2;
}
