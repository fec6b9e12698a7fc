// Every result that the module returns by itself. Beside these, failures of the platform pass through as
// negative numbers (platform/base/PlatformResults.h).
#pragma once

#include <cstdint>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

// 0 for success, else one of RESULT_…, or a negative failure of the platform.
using Result = int32_t;

// clang-format off
inline constexpr Result RESULT_OK                =    0;  // success
inline constexpr Result RESULT_FAILED            =    1;  // could not be done, no closer reason
inline constexpr Result RESULT_NO_MEMORY         =    2;  // no memory, or an object could not be created
inline constexpr Result RESULT_NOT_FOUND         =    3;  // no such class, interface or holder
inline constexpr Result RESULT_BAD_ARGUMENT      =    4;  // null where a pointer is required, index out of range
inline constexpr Result RESULT_NOT_SUPPORTED     =    5;  // the object doesn't implement the operation
inline constexpr Result RESULT_BAD_EXTENSION     =    8;  // GetExtension: null pointer or unknown index
inline constexpr Result RESULT_NOT_OPEN          =   12;  // the writer is not open
inline constexpr Result RESULT_CANNOT_OPEN       = 1000;  // the file could not be opened or created
inline constexpr Result RESULT_NOT_PCM           = 1001;  // no PCM of 8 or 16 bits
inline constexpr Result RESULT_NOT_WAVE          = 1003;  // no usable RIFF WAVE file, or reading or seeking failed
inline constexpr Result RESULT_WRITE_FAILED      = 1004;  // writing to the file failed
inline constexpr Result RESULT_CANNOT_CREATE     = 1005;  // no new file where overwriting was not allowed
inline constexpr Result RESULT_FILE_IN_USE       = 1007;  // the platform's sharing violation
inline constexpr Result RESULT_SOURCE_NOT_LOADED = 1200;  // the source could not be loaded, the graph not connected
inline constexpr Result RESULT_FILTER_MISSING    = 1300;  // a filter or its private interface is missing
inline constexpr Result RESULT_CANNOT_RUN        = 1302;  // the graph refused to run
// clang-format on

}  // namespace vlacwav3
