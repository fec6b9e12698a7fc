// Results of the platform's own interfaces: a caller's stream answers with them, images too, and the module
// passes failures through as they are. 0 and above are successes, negative numbers failures.
#pragma once

#include <cstdint>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

// clang-format off
inline constexpr int32_t PLATFORM_OK              = 0;  // all that was asked for
inline constexpr int32_t PLATFORM_LESS            = 1;  // success, but with less: a read at the end of a stream
inline constexpr int32_t PLATFORM_NOT_IMPLEMENTED = static_cast<int32_t>(0x80004001);  // no such operation here
inline constexpr int32_t PLATFORM_NO_INTERFACE    = static_cast<int32_t>(0x80004002);  // the object has no such interface
inline constexpr int32_t PLATFORM_NULL_POINTER    = static_cast<int32_t>(0x80004003);  // null where a pointer is required
inline constexpr int32_t PLATFORM_FAILED          = static_cast<int32_t>(0x80004005);  // no closer reason
inline constexpr int32_t PLATFORM_NO_MEMORY       = static_cast<int32_t>(0x8007000E);  // no memory for what was asked
inline constexpr int32_t PLATFORM_BAD_ARGUMENT    = static_cast<int32_t>(0x80070057);  // a value that isn't allowed
// clang-format on

}  // namespace vlacwav3
