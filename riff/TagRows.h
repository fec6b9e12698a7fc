// The rows of the table of tags. Read through TagTable alone, so that a program can bring rows of its own.
#pragma once

#include <algorithm>
#include <iterator>

#include "riff/TagIds.h"
#include "riff/TagTable.h"

namespace TagRows {

using namespace vlacwav3;  // the ids

inline constexpr uint8_t kCarried = TAG_COPIED;
inline constexpr uint8_t kRead = TAG_READ;
inline constexpr uint8_t kIn = TAG_COPIED | TAG_READ;
inline constexpr uint8_t kBoth = TAG_COPIED | TAG_READ | TAG_WRITTEN;

// clang-format off
inline constexpr TagRow kRows[] = {
    // attribute             kind             uses     keyword     shown, written, own chunk, its form
    {ATTR_TEXT_LANGUAGE_CODE, TagKind::Number, kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_TEXT_LANGUAGE_ID,   TagKind::Number, kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_GENRE,              TagKind::Text,   kBoth,   "genre",       7,  4, FourCC("IGNR"), TagForm::Text},
    {ATTR_TEXT_GENRE_CODE,    TagKind::Number, kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_TITLE,              TagKind::Text,   kBoth,   "title",       1,  1, FourCC("INAM"), TagForm::Text},
    {ATTR_ARTIST,             TagKind::Text,   kBoth,   "artist",      2,  2, FourCC("IART"), TagForm::Text},
    {ATTR_WRITER,             TagKind::Text,   kBoth,   "writer",      4,  6, 0,              TagForm::None},
    {ATTR_COMPOSER,           TagKind::Text,   kBoth,   "composer",    5,  5, 0,              TagForm::None},
    {ATTR_ARRANGER,           TagKind::Text,   kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_COMMENT,            TagKind::Text,   kBoth,   "comment",     6,  7, FourCC("ICMT"), TagForm::Text},
    {ATTR_UPC,                TagKind::Text,   kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_ISRC,               TagKind::Text,   kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_MEDIA_ID,           TagKind::Text,   kCarried,"MediaID",    20,  0, 0,              TagForm::None},
    {ATTR_MUI_ID,             TagKind::Text,   kCarried,"MuiID",      21,  0, 0,              TagForm::None},
    {ATTR_IDENTIFIER,         TagKind::Text,   kCarried,"identifier", 22,  0, 0,              TagForm::None},
    {ATTR_BPM,                TagKind::Text,   kBoth,   "bpm",        23, 10, 0,              TagForm::None},
    {ATTR_REPLAY_GAIN,        TagKind::Text,   kCarried,"ReplayGain", 24,  0, 0,              TagForm::None},
    {ATTR_METADATA_EXTRA,     TagKind::Text,   kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_ALBUM,              TagKind::Text,   kBoth,   "album",       3,  3, FourCC("IPRD"), TagForm::Text},
    {ATTR_YEAR,               TagKind::Number, kBoth,   "year",       17, 11, FourCC("ICRD"), TagForm::Date},
    {ATTR_MONTH,              TagKind::Number, kBoth,   "month",      18, 13, 0,              TagForm::None},
    {ATTR_DAY,                TagKind::Number, kBoth,   "day",        19, 12, 0,              TagForm::None},
    {ATTR_TRACK,              TagKind::Number, kBoth,   "track",      16, 14, FourCC("IARL"), TagForm::Track},
    {ATTR_DATE_EXTRA,         TagKind::Number, kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_COPYRIGHT,          TagKind::Text,   kBoth,   "copyright",   9,  8, FourCC("ICOP"), TagForm::Text},
    {ATTR_DISC,               TagKind::Text,   kIn,     "disc",       10,  0, 0,              TagForm::None},
    {ATTR_BAND,               TagKind::Text,   kBoth,   "band",       11,  9, 0,              TagForm::None},
    {ATTR_CONDUCTOR,          TagKind::Text,   kCarried,"conductor",  12,  0, 0,              TagForm::None},
    {ATTR_BY,                 TagKind::Text,   kCarried,"by",         13,  0, 0,              TagForm::None},
    {ATTR_GROUPING,           TagKind::Text,   kCarried,"grouping",   14,  0, 0,              TagForm::None},
    {ATTR_SUBTITLE,           TagKind::Text,   kCarried,"subtitle",   15,  0, 0,              TagForm::None},
    {ATTR_METADATA_LONG_1,    TagKind::Number, kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_METADATA_LONG_2,    TagKind::Number, kCarried,"",            0,  0, 0,              TagForm::None},
    {ATTR_ARTIST,             TagKind::Text,   kRead,   "performer",   8,  0, 0,              TagForm::None},  // a second word for the artist
};
// clang-format on

// Places count from 1 without a gap, and no two rows share one; a row has what its uses and its form need.
constexpr bool PlacesAreWhole(uint8_t TagRow::*place) {
    std::ptrdiff_t count = 0;
    for (const TagRow& row : kRows) count += row.*place != 0;
    for (std::ptrdiff_t wanted = 1; wanted <= count; ++wanted)
        if (std::count_if(std::begin(kRows), std::end(kRows),
                          [&](const TagRow& row) { return row.*place == wanted; }) != 1)
            return false;
    return true;
}
static_assert(PlacesAreWhole(&TagRow::keywordPlace) && PlacesAreWhole(&TagRow::writtenPlace));
static_assert(std::all_of(std::begin(kRows), std::end(kRows), [](const TagRow& row) {
    const uint32_t nibble = row.id & 0x0F000000;
    return nibble == (row.kind == TagKind::Number ? 0x02000000u : 0x04000000u) &&
           ((row.uses & TAG_WRITTEN) != 0) == (row.writtenPlace != 0) &&
           (row.chunk != 0) == (row.form != TagForm::None) && row.keyword.empty() == (row.keywordPlace == 0);
}));

}  // namespace TagRows
