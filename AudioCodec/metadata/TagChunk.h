// The private sub-chunk "vltg": any number of named texts in UTF-16, one entry behind the other without
// padding:
//
//   name (ANSI, no "=")   "="   byte order mark   units of the value   00 00
//
// and one byte 00 behind the last entry. Knows nothing of which names belong there.
//
// Chosen where it was open: an entry that the chunk's end cuts off is dropped; the whole ones in front of it
// stay.
#pragma once

#include <string>
#include <string_view>

#include "AudioCodec/metadata/TagList.h"

// Appends the entries to the list. Never reads behind the bytes.
void ParseTagChunk(TagList& tags, std::string_view bytes);

// Appends one entry to a chunk that is being built; the caller puts the closing zero byte behind the last.
void AppendTagEntry(std::string& bytes, TagEntry& entry);
