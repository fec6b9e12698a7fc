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

// What a host sets on a reader, a writer or an editor before its Open. Absent, false and 0 mean the same:
// the object does as it did before there were these.
inline constexpr uint32_t ATTR_EDIT_ANY_FORMAT      = 0x30050100;  // BOOL, editor: true opens WAV of any format, whose record a save leaves alone
inline constexpr uint32_t ATTR_EDIT_CHANGED_ONLY    = 0x30050102;  // BOOL, editor and writer: true writes the tags that differ from the file's, and nothing else
inline constexpr uint32_t ATTR_INFO_ENCODING        = 0x32050101;  // LONG, reader, writer and editor: one of the next; another number counts as 0

// What the texts of the "INFO" list's own chunks are in; the entries of "vltg" are UTF-16 in any case.
inline constexpr uint32_t INFO_ENCODING_ANSI        = 0;  // Windows-1252; a character that it lacks is stored as "?"
inline constexpr uint32_t INFO_ENCODING_UTF8        = 1;  // UTF-8; a byte that isn't is read as the unit 0xDC00 + byte, and written back as that byte
inline constexpr uint32_t INFO_ENCODING_EITHER      = 2;  // each text is read as UTF-8 where it is that and goes beyond ASCII, else as Windows-1252; a list
                                                          // is written as the file had it, and where Windows-1252 can't hold that, as a whole in UTF-8
// clang-format on

}  // namespace vlacwav3
