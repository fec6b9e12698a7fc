#include "AudioCodec/metadata/InfoText.h"

#include <algorithm>

#include "AudioCodec/attributes/AttributeIds.h"
#include "platform/base/CodePage1252.h"
#include "platform/base/Utf.h"
#include "riff/TagTable.h"

namespace {

constexpr char16_t kHighMask = 0xFC00;  // of the surrogates
constexpr char16_t kHigh = 0xD800;
constexpr char16_t kFirstLoneByte = 0xDC80;  // the units that stand for bytes which are no UTF-8
constexpr char16_t kLastLoneByte = 0xDCFF;

bool IsAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) == 0; });
}

// Sound UTF-8 makes a unit of that range only as the second half of a pair.
bool HoldsLoneByte(std::u16string_view text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isPair = i != 0 && (text[i - 1] & kHighMask) == kHigh;
        if (!isPair && text[i] >= kFirstLoneByte && text[i] <= kLastLoneByte) return true;
    }
    return false;
}

std::u16string FromAnsi(std::string_view bytes) {
    std::u16string text(bytes.size(), u'\0');
    const auto size = static_cast<int>(bytes.size());
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, text.data(), size);
    return text;
}

std::string ToAnsi(std::u16string_view text) {
    std::string bytes(text.size(), '\0');
    const auto size = static_cast<int>(text.size());
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

}  // namespace

InfoEncoding InfoEncodingOf(uint32_t attribute) {
    if (attribute == INFO_ENCODING_UTF8) return InfoEncoding::Utf8;
    return attribute == INFO_ENCODING_EITHER ? InfoEncoding::Either : InfoEncoding::Ansi;
}

std::string_view TextOfInfoChunk(std::string_view chunk) { return chunk.substr(0, chunk.find('\0')); }

std::u16string DecodeInfoText(std::string_view bytes, InfoEncoding encoding) {
    if (encoding == InfoEncoding::Ansi || IsAscii(bytes)) return FromAnsi(bytes);
    std::u16string text = Utf::FromUtf8(bytes);
    return encoding == InfoEncoding::Either && HoldsLoneByte(text) ? FromAnsi(bytes) : text;
}

std::string EncodeInfoText(std::u16string_view text, InfoEncoding encoding) {
    return encoding == InfoEncoding::Utf8 ? Utf::ToUtf8(text) : ToAnsi(text);
}

bool IsUtf8Text(std::string_view bytes) { return !IsAscii(bytes) && !HoldsLoneByte(Utf::FromUtf8(bytes)); }

bool IsAnsiText(std::string_view bytes) { return !IsAscii(bytes) && !IsUtf8Text(bytes); }

bool HoldUtf8Text(const InfoChunks& chunks) {
    for (const TagRow& row : TagTable()) {
        if (row.form != TagForm::Text) continue;
        const auto chunk = chunks.Find(row.chunk);
        if (chunk && IsUtf8Text(TextOfInfoChunk(*chunk))) return true;
    }
    return false;
}

bool IsHeldByAnsi(std::u16string_view text) {
    return DecodeInfoText(ToAnsi(text), InfoEncoding::Either) == text;
}
