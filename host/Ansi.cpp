#include "host/Ansi.h"

#include "platform/base/CodePage1252.h"

namespace Ansi {

// One unit is one byte, both ways.
std::string FromUtf16(const std::u16string& text) {
    std::string bytes(text.size(), '\0');
    const auto size = static_cast<int>(text.size());
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::u16string ToUtf16(const std::string& bytes) {
    std::u16string text(bytes.size(), u'\0');
    const auto size = static_cast<int>(bytes.size());
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, text.data(), size);
    return text;
}

}  // namespace Ansi
