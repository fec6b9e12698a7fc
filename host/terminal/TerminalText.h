// Foreign bytes on their way to a screen or into JSON: names of files and texts of tags may hold anything.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace TerminalText {

// For people: what would steer a terminal, or change the order in which a line is read, is spelled out.
// Control characters of C0 and DEL and bytes that are no UTF-8 become \xNN; controls of C1, the marks and
// isolates of bidirectional text, and the separators of lines and paragraphs become \uNNNN. All else stays,
// the backslash too, so that text which went through here already comes out as it was.
std::string Printable(std::string_view text);

// The same characters in a JSON text as \uNNNN, which a reader turns back into them; its layout stays. The
// text must be valid JSON in UTF-8.
std::string PrintableJson(std::string_view json);

bool IsUtf8(std::string_view bytes);

// RFC 4648, section 4, with padding.
std::string Base64(std::string_view bytes);
// The bytes again; nothing for what isn't such a text.
std::optional<std::string> FromBase64(std::string_view text);

}  // namespace TerminalText
