// What an attribute can hold, and what the type nibble of an id says it is meant to hold. The two numberings
// are different ones; neither is computed from the other. Data only.
#pragma once

#include <cstdint>

#include "platform/base/GlobalNames.h"

namespace vlacwav3 {

// Store types: what a record holds.
inline constexpr uint32_t STORE_LONG = 1;
inline constexpr uint32_t STORE_BOOL = 2;
inline constexpr uint32_t STORE_LONG_ARRAY = 3;
inline constexpr uint32_t STORE_STRING = 4;
inline constexpr uint32_t STORE_DATA = 5;
inline constexpr uint32_t STORE_LONG64 = 6;
inline constexpr uint32_t STORE_LONG64_ARRAY = 7;
inline constexpr uint32_t STORE_POINTER = 8;
inline constexpr uint32_t STORE_POINTER_ARRAY = 9;

// The type nibble: bits 24 to 27 of an id.
inline constexpr uint32_t kTypeNibbleMask = 0x0F000000;
inline constexpr uint32_t NIBBLE_BOOL = 0x00000000;
inline constexpr uint32_t NIBBLE_DATA = 0x01000000;
inline constexpr uint32_t NIBBLE_LONG = 0x02000000;
inline constexpr uint32_t NIBBLE_LONG_ARRAY = 0x03000000;
inline constexpr uint32_t NIBBLE_STRING = 0x04000000;
inline constexpr uint32_t NIBBLE_LONG64 = 0x05000000;
inline constexpr uint32_t NIBBLE_POINTER = 0x07000000;
inline constexpr uint32_t NIBBLE_POINTER_ARRAY = 0x08000000;

// What an id is meant to hold: one of NIBBLE_….
constexpr uint32_t TypeNibble(uint32_t id) { return id & kTypeNibbleMask; }

}  // namespace vlacwav3
