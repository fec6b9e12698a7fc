// Text in Windows-1252, the code page that a file's standard tags are stored in.
#pragma once

#include <string>

namespace Ansi {
// Each character that the code page lacks becomes "?".
std::string FromUtf16(const std::u16string& text);
std::u16string ToUtf16(const std::string& bytes);
}  // namespace Ansi
