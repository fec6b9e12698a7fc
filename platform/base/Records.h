// Records of the platform that the stream interface is spelled with.
#pragma once

#include <cstdint>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

// A signed number of 64 bits, whole and by halves.
union LARGE_INTEGER {
    // The halves.
    struct {
        uint32_t LowPart;
        int32_t HighPart;
    } u;
    int64_t QuadPart;  // the whole
};

// The same without a sign.
union ULARGE_INTEGER {
    // The halves.
    struct {
        uint32_t LowPart;
        uint32_t HighPart;
    } u;
    uint64_t QuadPart;  // the whole
};

// A time in units of 100 ns since the start of 1601, UTC.
struct FILETIME {
    uint32_t dwLowDateTime;   // its lower 32 bits
    uint32_t dwHighDateTime;  // its upper 32 bits
};

static_assert(sizeof(LARGE_INTEGER) == 8 && sizeof(ULARGE_INTEGER) == 8 && sizeof(FILETIME) == 8);

}  // namespace vlacwav3
