// Changes single entries of an "INFO" list as it stands in a file, byte for byte around them: the order, ids
// that nobody here knows, ids that occur again, pad bytes of any value and what is left over at the end stay.
//
// Decisions: a changed entry keeps the place of the first of its id, and further ones of that id go, so that
// no reader finds the old one. New ones come after the last entry that is whole: an entry that the list's end
// cuts off, and up to 8 bytes that are none, stay at the end, where alone they mean what they mean.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "riff/InfoList.h"

struct InfoChange {
    uint32_t id = 0;
    std::optional<std::string> bytes;  // the entry's new content; nothing: it goes
};

// `entries`: what a list holds after its type. Each id has one change at the most; new entries come in the
// order of the changes. The result may be odd. Throws std::bad_alloc.
std::string ChangeInfoEntries(std::string_view entries, std::span<const InfoChange> changes);

// Puts the entries in place of what `chunks` holds, as ReadInfoList does. May throw bad_alloc.
void ReadInfoEntries(std::string_view entries, InfoChunks& chunks, InfoWanted wanted = InfoWanted::All);
