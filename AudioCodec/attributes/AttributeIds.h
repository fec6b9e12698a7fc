// The attribute ids that the module sets, reads or carries. Data only: what a value means is said where it is
// used, and the store treats all ids alike.
//
// An id is 32 bits: bits 28 to 31 part the owners of the id space (0 shared, 1 metadata extensions of the
// audio layer, 3 codecs), bits 24 to 27 say what the id is meant to hold (StoreTypes.h).
#pragma once

#include <cstdint>
#include <iterator>

// clang-format off

// What a codec is.
inline constexpr uint32_t ATTR_CODEC_CAPABILITY_1   = 0x30000001;  // BOOL, like the four behind it
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

// Metadata of a track.
inline constexpr uint32_t ATTR_GENRE                = 0x04000006;
inline constexpr uint32_t ATTR_TITLE                = 0x04000008;
inline constexpr uint32_t ATTR_ARTIST               = 0x04000009;
inline constexpr uint32_t ATTR_WRITER               = 0x0400000A;
inline constexpr uint32_t ATTR_COMPOSER             = 0x0400000B;
inline constexpr uint32_t ATTR_ARRANGER             = 0x0400000C;
inline constexpr uint32_t ATTR_COMMENT              = 0x0400000D;
inline constexpr uint32_t ATTR_UPC                  = 0x0400000E;
inline constexpr uint32_t ATTR_ISRC                 = 0x0400000F;
inline constexpr uint32_t ATTR_TRACK                = 0x02000019;
inline constexpr uint32_t ATTR_TEXT_GENRE_CODE      = 0x02000022;
inline constexpr uint32_t ATTR_TEXT_LANGUAGE_CODE   = 0x02000026;
inline constexpr uint32_t ATTR_TEXT_LANGUAGE_ID     = 0x020000F0;
inline constexpr uint32_t ATTR_YEAR                 = 0x12900001;
inline constexpr uint32_t ATTR_MONTH                = 0x12900002;
inline constexpr uint32_t ATTR_DAY                  = 0x12900003;
inline constexpr uint32_t ATTR_DATE_EXTRA           = 0x12900004;
inline constexpr uint32_t ATTR_ALBUM                = 0x14900001;
inline constexpr uint32_t ATTR_BAND                 = 0x14900003;
inline constexpr uint32_t ATTR_CONDUCTOR            = 0x1490000A;
inline constexpr uint32_t ATTR_BY                   = 0x1490000B;
inline constexpr uint32_t ATTR_GROUPING             = 0x1490000C;
inline constexpr uint32_t ATTR_SUBTITLE             = 0x1490000D;
inline constexpr uint32_t ATTR_COPYRIGHT            = 0x1490000E;
inline constexpr uint32_t ATTR_DISC                 = 0x1490000F;
inline constexpr uint32_t ATTR_MEDIA_ID             = 0x14900014;
inline constexpr uint32_t ATTR_MUI_ID               = 0x14900015;
inline constexpr uint32_t ATTR_IDENTIFIER           = 0x14900016;
inline constexpr uint32_t ATTR_BPM                  = 0x14900018;
inline constexpr uint32_t ATTR_REPLAY_GAIN          = 0x14900019;
inline constexpr uint32_t ATTR_METADATA_EXTRA       = 0x14900020;
inline constexpr uint32_t ATTR_METADATA_LONG_1      = 0x32000005;
inline constexpr uint32_t ATTR_METADATA_LONG_2      = 0x32000006;

// Every id that a copy of metadata covers, in the order of the copy, and which of them a file's tags are read
// into and written from.
struct MetadataId {
    uint32_t id;
    bool fromTags;
    bool toTags;
};
inline constexpr MetadataId kMetadataIds[] = {
    {ATTR_TEXT_LANGUAGE_CODE, false, false},
    {ATTR_TEXT_LANGUAGE_ID,   false, false},
    {ATTR_GENRE,              true,  true},
    {ATTR_TEXT_GENRE_CODE,    false, false},
    {ATTR_TITLE,              true,  true},
    {ATTR_ARTIST,             true,  true},
    {ATTR_WRITER,             true,  true},
    {ATTR_COMPOSER,           true,  true},
    {ATTR_ARRANGER,           false, false},
    {ATTR_COMMENT,            true,  true},
    {ATTR_UPC,                false, false},
    {ATTR_ISRC,               false, false},
    {ATTR_MEDIA_ID,           false, false},
    {ATTR_MUI_ID,             false, false},
    {ATTR_IDENTIFIER,         false, false},
    {ATTR_BPM,                true,  true},
    {ATTR_REPLAY_GAIN,        false, false},
    {ATTR_METADATA_EXTRA,     false, false},
    {ATTR_ALBUM,              true,  true},
    {ATTR_YEAR,               true,  true},
    {ATTR_MONTH,              true,  true},
    {ATTR_DAY,                true,  true},
    {ATTR_TRACK,              true,  true},
    {ATTR_DATE_EXTRA,         false, false},
    {ATTR_COPYRIGHT,          true,  true},
    {ATTR_DISC,               true,  false},  // comes in, is never written back
    {ATTR_BAND,               true,  true},
    {ATTR_CONDUCTOR,          false, false},
    {ATTR_BY,                 false, false},
    {ATTR_GROUPING,           false, false},
    {ATTR_SUBTITLE,           false, false},
    {ATTR_METADATA_LONG_1,    false, false},
    {ATTR_METADATA_LONG_2,    false, false},
};
static_assert(std::size(kMetadataIds) == 33);

// The words by which the audio layer names metadata.
struct AttributeKeyword {
    const char16_t* keyword;
    uint32_t id;
};
inline constexpr AttributeKeyword kAttributeKeywords[] = {
    {u"title",      ATTR_TITLE},
    {u"artist",     ATTR_ARTIST},
    {u"album",      ATTR_ALBUM},
    {u"writer",     ATTR_WRITER},
    {u"composer",   ATTR_COMPOSER},
    {u"comment",    ATTR_COMMENT},
    {u"genre",      ATTR_GENRE},
    {u"performer",  ATTR_ARTIST},  // a second word for the artist
    {u"copyright",  ATTR_COPYRIGHT},
    {u"disc",       ATTR_DISC},
    {u"band",       ATTR_BAND},
    {u"conductor",  ATTR_CONDUCTOR},
    {u"by",         ATTR_BY},
    {u"grouping",   ATTR_GROUPING},
    {u"subtitle",   ATTR_SUBTITLE},
    {u"track",      ATTR_TRACK},
    {u"year",       ATTR_YEAR},
    {u"month",      ATTR_MONTH},
    {u"day",        ATTR_DAY},
    {u"MediaID",    ATTR_MEDIA_ID},
    {u"MuiID",      ATTR_MUI_ID},
    {u"identifier", ATTR_IDENTIFIER},
    {u"bpm",        ATTR_BPM},
    {u"ReplayGain", ATTR_REPLAY_GAIN},
};
static_assert(std::size(kAttributeKeywords) == 24);
// clang-format on
