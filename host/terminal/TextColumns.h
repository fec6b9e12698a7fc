// How wide text is on a screen. Text is UTF-8 that TerminalText::Printable has made harmless.
#pragma once

#include <string>
#include <string_view>

namespace TextColumns {

// As wcwidth(3) has it: 2 for each wide character, 0 for one that combines.
size_t Count(std::string_view text);
// At most so many columns, with "…" in the middle for what had to go, so that beginnings and endings of names
// stay.
std::string Shortened(std::string_view text, size_t most);

}  // namespace TextColumns
