// Records of the platform that the stream interface is spelled with.
#pragma once

#include <cstdint>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

union LARGE_INTEGER {
    struct {
        uint32_t LowPart;
        int32_t HighPart;
    } u;
    int64_t QuadPart;
};

union ULARGE_INTEGER {
    struct {
        uint32_t LowPart;
        uint32_t HighPart;
    } u;
    uint64_t QuadPart;
};

// A time in units of 100 ns since the start of 1601, UTC.
struct FILETIME {
    uint32_t dwLowDateTime;
    uint32_t dwHighDateTime;
};

static_assert(sizeof(LARGE_INTEGER) == 8 && sizeof(ULARGE_INTEGER) == 8 && sizeof(FILETIME) == 8);

}  // namespace vlacwav3
