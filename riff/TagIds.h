// The numbers under which the suite knows a track's metadata. Bits 24 to 27 say what is meant to be held: 2 a
// number, 4 a text. Where it says so, a reader takes the tag from a WAV file, and a writer or editor puts it
// there; the others are carried from one metadata object to another.
#pragma once

#include <cstdint>

namespace vlacwav3 {

// clang-format off
inline constexpr uint32_t ATTR_GENRE              = 0x04000006;  // read and written
inline constexpr uint32_t ATTR_TITLE              = 0x04000008;  // read and written
inline constexpr uint32_t ATTR_ARTIST             = 0x04000009;  // read and written
inline constexpr uint32_t ATTR_WRITER             = 0x0400000A;  // read and written
inline constexpr uint32_t ATTR_COMPOSER           = 0x0400000B;  // read and written
inline constexpr uint32_t ATTR_ARRANGER           = 0x0400000C;  // carried
inline constexpr uint32_t ATTR_COMMENT            = 0x0400000D;  // read and written
inline constexpr uint32_t ATTR_UPC                = 0x0400000E;  // carried
inline constexpr uint32_t ATTR_ISRC               = 0x0400000F;  // carried
inline constexpr uint32_t ATTR_TRACK              = 0x02000019;  // read and written
inline constexpr uint32_t ATTR_TEXT_GENRE_CODE    = 0x02000022;  // carried
inline constexpr uint32_t ATTR_TEXT_LANGUAGE_CODE = 0x02000026;  // carried
inline constexpr uint32_t ATTR_TEXT_LANGUAGE_ID   = 0x020000F0;  // carried
inline constexpr uint32_t ATTR_YEAR               = 0x12900001;  // read and written
inline constexpr uint32_t ATTR_MONTH              = 0x12900002;  // read and written
inline constexpr uint32_t ATTR_DAY                = 0x12900003;  // read and written
inline constexpr uint32_t ATTR_DATE_EXTRA         = 0x12900004;  // carried
inline constexpr uint32_t ATTR_ALBUM              = 0x14900001;  // read and written
inline constexpr uint32_t ATTR_BAND               = 0x14900003;  // read and written
inline constexpr uint32_t ATTR_CONDUCTOR          = 0x1490000A;  // carried
inline constexpr uint32_t ATTR_BY                 = 0x1490000B;  // carried
inline constexpr uint32_t ATTR_GROUPING           = 0x1490000C;  // carried
inline constexpr uint32_t ATTR_SUBTITLE           = 0x1490000D;  // carried
inline constexpr uint32_t ATTR_COPYRIGHT          = 0x1490000E;  // read and written
inline constexpr uint32_t ATTR_DISC               = 0x1490000F;  // read, never written back
inline constexpr uint32_t ATTR_MEDIA_ID           = 0x14900014;  // carried
inline constexpr uint32_t ATTR_MUI_ID             = 0x14900015;  // carried
inline constexpr uint32_t ATTR_IDENTIFIER         = 0x14900016;  // carried
inline constexpr uint32_t ATTR_BPM                = 0x14900018;  // read and written
inline constexpr uint32_t ATTR_REPLAY_GAIN        = 0x14900019;  // carried
inline constexpr uint32_t ATTR_METADATA_EXTRA     = 0x14900020;  // carried
inline constexpr uint32_t ATTR_METADATA_LONG_1    = 0x32000005;  // carried
inline constexpr uint32_t ATTR_METADATA_LONG_2    = 0x32000006;  // carried
// clang-format on

}  // namespace vlacwav3
