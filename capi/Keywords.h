// The keywords under which programs know tags, in the order in which they are shown, "title" first. A second
// word for a tag, such as "performer", is understood and not listed.
#pragma once

#include <cstddef>
#include <string_view>

#include "riff/TagTable.h"

namespace Keywords {

// The tag's row; null past the last one.
const TagRow* At(size_t index);
// The row of a word in either case of ASCII letters, that of the tag's own keyword for a second word; null
// for a word that is no keyword.
const TagRow* Find(std::string_view word);

}  // namespace Keywords
