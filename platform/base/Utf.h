// UTF-16 text of the platform against the bytes of the system, which are UTF-8 by custom but may be anything.
// A byte that is no UTF-8 becomes the lone unit 0xDC00 + byte and turns back into that byte, so that every
// file name of the system survives the way in and out. All other lone surrogates become U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace Utf {
std::u16string FromUtf8(std::string_view bytes);
std::string ToUtf8(std::u16string_view text);
}  // namespace Utf
