// All that is known of each tag, in one table: what reads, writes, copies, names or warns of tags takes it
// from here. A new tag is a new row.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "riff/WaveTypes.h"

inline constexpr uint32_t kTagChunk =
    FourCC("vltg");  // the sub-chunk of all tags that have none of their own

enum class TagKind { Text, Number };

// What is done with a tag's attribute; bits.
inline constexpr uint8_t TAG_COPIED = 1;   // from one metadata object to another
inline constexpr uint8_t TAG_READ = 2;     // set from a file's tag
inline constexpr uint8_t TAG_WRITTEN = 4;  // stored in files

// How a sub-chunk of the tag's own holds it, in the ANSI code page.
enum class TagForm {
    None,   // it has no such chunk: an entry of "vltg", in UTF-16
    Text,   // the text and a zero byte
    Date,   // the year is the first four bytes; month and day go on after it
    Track,  // digits; anything else is an archival location, and stays
};

inline constexpr size_t kYearDigits = 4;  // what counts of a date as the year
inline constexpr size_t kTrackChunkMost =
    2;  // a longer chunk is an archival location, whatever it begins with

struct TagRow {
    uint32_t id;  // of the attribute
    TagKind kind;
    uint8_t uses;
    std::string_view keyword;  // ASCII; in lower case it is the name in files; empty: none
    uint8_t keywordPlace;      // where it is shown among the others, from 1; 0: it has no keyword
    uint8_t writtenPlace;      // where it is written among the others, from 1; 0: it isn't
    uint32_t chunk;            // its own sub-chunk; 0: none
    TagForm form;
};

// Every row, in the order in which attributes are copied. An attribute may have a second word, further down.
std::span<const TagRow> TagTable();

// Whether a chunk of form Track gives its place to a new number.
bool HoldsTrack(std::string_view chunk);

// Where in the table the first row of its attribute stands.
size_t PlaceOfAttribute(const TagRow& row);

// These return null where there is no such row.
const TagRow* FindTagById(uint32_t id);                    // the first of them
const TagRow* FindTagByChunk(uint32_t chunk);              // the row whose own chunk it is
const TagRow* FindTagByKeyword(std::string_view keyword);  // letters of either case are equal
const TagRow* FindTagByName(std::string_view name);        // one that is read, by its name in a file
const TagRow* FindTagShownAt(uint32_t place);              // to be walked from 1 until null
const TagRow* FindTagWrittenAt(uint32_t place);            // likewise
