// What the texts of an "INFO" list's own chunks are in, read and written. The entries of "vltg" are UTF-16
// and take no part.
//
// Decisions: a byte that is no UTF-8 in a text that is told to be is read as the unit 0xDC00 + byte and
// written back as that byte, so that it is seen and no save loses it. A list that holds UTF-8 and
// Windows-1252 side by side counts as UTF-8. A text that stands in Windows-1252 and would come back as
// another one, because its bytes happen to be UTF-8, counts as one that Windows-1252 doesn't hold.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "riff/InfoChunks.h"

enum class InfoEncoding {
    Ansi,    // Windows-1252
    Utf8,    // UTF-8
    Either,  // each text is read as what it is; a list is written as one of the two
};

// That of the attribute ATTR_INFO_ENCODING; a number that it doesn't know counts as 0.
InfoEncoding InfoEncodingOf(uint32_t attribute);

// The text of a chunk: its bytes up to the first zero, or all of them.
std::string_view TextOfInfoChunk(std::string_view chunk);

// `bytes` hold no zero. Throws std::bad_alloc.
std::u16string DecodeInfoText(std::string_view bytes, InfoEncoding encoding);

// `encoding`: one of the two that are written. A character that Windows-1252 lacks becomes "?". Throws
// std::bad_alloc.
std::string EncodeInfoText(std::u16string_view text, InfoEncoding encoding);

// The text goes beyond ASCII and is sound UTF-8. Throws std::bad_alloc.
bool IsUtf8Text(std::string_view bytes);
// The text goes beyond ASCII and isn't that. Throws std::bad_alloc.
bool IsAnsiText(std::string_view bytes);
// A text of the tags in these chunks is UTF-8. Throws std::bad_alloc.
bool HoldUtf8Text(const InfoChunks& chunks);
// Written in Windows-1252, the text comes back from InfoEncoding::Either as it was. Throws std::bad_alloc.
bool IsHeldByAnsi(std::u16string_view text);

// What the texts of a list are written in that has these chunks in its file so far; `isHeld()` tells whether
// Windows-1252 holds all texts that are to be written.
template <class IsHeld>
InfoEncoding WrittenEncoding(InfoEncoding encoding, const InfoChunks& file, IsHeld&& isHeld) {
    if (encoding != InfoEncoding::Either) return encoding;
    return HoldUtf8Text(file) || !isHeld() ? InfoEncoding::Utf8 : InfoEncoding::Ansi;
}
