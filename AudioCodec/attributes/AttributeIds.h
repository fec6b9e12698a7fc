// The attribute ids that the module sets, reads or carries. Data only: what a value means is said where it is
// used, and the store treats all ids alike.
//
// An id is 32 bits: bits 28 to 31 part the owners of the id space (0 shared, 1 metadata extensions of the
// audio layer, 3 codecs), bits 24 to 27 say what the id is meant to hold (StoreTypes.h).
#pragma once

#include "platform/base/GlobalNames.h"
#include "riff/TagIds.h"

namespace vlacwav3 {

// clang-format off

// What a codec is.
inline constexpr uint32_t ATTR_CODEC_CAPABILITY_1   = 0x30000001;  // BOOL, like the four after it
inline constexpr uint32_t ATTR_CODEC_CAPABILITY_2   = 0x30000002;
inline constexpr uint32_t ATTR_CODEC_CAPABILITY_3   = 0x30000003;
inline constexpr uint32_t ATTR_CODEC_CAPABILITY_4   = 0x30000004;
inline constexpr uint32_t ATTR_CODEC_CAPABILITY_5   = 0x30000005;
inline constexpr uint32_t ATTR_CODEC_FORMAT_NAME    = 0x34000001;  // STRING: "PCM" or "WAV"
inline constexpr uint32_t ATTR_READ_EXTENSION       = 0x34000002;  // STRING, with its dot, like the next
inline constexpr uint32_t ATTR_WRITE_EXTENSION      = 0x34000003;
inline constexpr uint32_t ATTR_CODEC_SHORT_NAME     = 0x34000004;  // STRING
inline constexpr uint32_t ATTR_STREAM_EXTENSION     = 0x34050007;  // STRING, with its dot

// What a host sets and the module reads.
inline constexpr uint32_t ATTR_FILTER_FOLDER        = 0x34050006;  // STRING: put before a filter's file name as it stands
inline constexpr uint32_t ATTR_NO_REGISTERED_FILTER = 0x30050002;  // BOOL: true keeps filters of the system out
inline constexpr uint32_t ATTR_TEXT_LANGUAGE        = 0x12900007;  // LONG: language of display texts
// clang-format on

}  // namespace vlacwav3
