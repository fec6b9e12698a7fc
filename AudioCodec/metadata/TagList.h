// The tags of a file as a flat list of name and value texts, the meeting point of chunks and attributes.
#pragma once

#include <vector>

#include "AudioCodec/shell/object/CStr.h"

struct TagEntry {
    CStr name;   // in lower case
    CStr value;  // without blanks at its ends
};

// In order of insertion; a name may occur several times.
using TagList = std::vector<TagEntry>;

// Appends a tag: the name in lower case, the value without the blanks (0x20) at its ends. Every entry of a
// list comes through here. The texts are copied. Throws std::bad_alloc, and the list then stays as it was.
void AddTag(TagList& tags, CStr& name, CStr& value);
