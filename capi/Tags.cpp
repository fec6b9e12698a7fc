#include "capi/Tags.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "capi/Keywords.h"
#include "platform/base/Utf.h"

namespace {

constexpr std::string_view kPictureStarts[] = {"\xFF\xD8\xFF", "\x89PNG\r\n\x1A\n", "GIF87a", "GIF89a", "BM"};
constexpr int32_t kShownFirst[] = {3, 0, 4, 8};  // front cover, other, back cover, artist

// The number as it is kept; empty for 0. Throws Failure.
std::string NumberOf(const TagRow& row, const std::string& value) {
    int32_t number = -1;
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || stop != end || number < 0)
        throw Failure(VLW_BAD_VALUE, std::string(row.keyword) +
                                         " must be a number from 0 to 2147483647, not \"" + value + "\".");
    return number == 0 ? std::string() : std::to_string(number);
}

}  // namespace

// A byte that is no UTF-8 turns into the lone second half of a pair, which no UTF-8 stands for.
bool IsUtf8(std::string_view text) {
    const auto isHigh = [](char16_t unit) { return (unit & 0xFC00) == 0xD800; };
    const auto isLow = [](char16_t unit) { return (unit & 0xFC00) == 0xDC00; };
    const std::u16string units = Utf::FromUtf8(text);
    for (size_t i = 0; i < units.size(); ++i)
        if (isLow(units[i]) && (i == 0 || !isHigh(units[i - 1]))) return false;
    return true;
}

void Tags::Set(const char* keyword, const char* value) {
    const TagRow* const row = Keywords::Find(keyword);
    if (!row) throw Failure(VLW_UNKNOWN_KEYWORD, "There is no tag named \"" + std::string(keyword) + "\".");
    std::string text = value ? value : "";
    if (!IsUtf8(text))
        throw Failure(VLW_BAD_VALUE, "The text of " + std::string(row->keyword) + " is no UTF-8.");
    if (row->kind == TagKind::Number && !text.empty()) text = NumberOf(*row, text);
    Put(*row, std::move(text));
}

void Tags::Put(const TagRow& row, std::string text) {
    if (text.empty())
        m_texts.erase(row.keywordPlace);
    else
        m_texts[row.keywordPlace] = std::move(text);
}

void Tags::DropUnkept() {
    std::erase_if(m_texts, [](const auto& text) {
        return !(FindTagById(FindTagShownAt(text.first)->id)->uses & TAG_WRITTEN);
    });
}

void Tags::Add(const Tags& other) {
    for (const auto& [place, text] : other.m_texts) m_texts[place] = text;
    m_asked.Forget();
    for (const auto& [number, bytes] : other.m_pictures) m_pictures[number] = bytes;
}

const std::string& Tags::TextOf(const TagRow& row) const {
    static const std::string s_none;
    const auto text = m_texts.find(row.keywordPlace);
    return text == m_texts.end() ? s_none : text->second;
}

void Tags::SetPicture(int32_t number, const void* bytes, size_t size) {
    m_asked.Forget();
    if (!bytes) {
        m_pictures.erase(number);
        return;
    }
    const std::string_view content(static_cast<const char*>(bytes), size);
    if (std::none_of(std::begin(kPictureStarts), std::end(kPictureStarts),
                     [&](std::string_view start) { return content.substr(0, start.size()) == start; }))
        throw Failure(VLW_BAD_VALUE, "The bytes of the picture are no JPEG, PNG, GIF or BMP file.");
    std::vector<uint8_t> copy(content.begin(), content.end());
    m_pictures[number] = std::move(copy);
}

void Tags::Clear() noexcept {
    m_asked.Forget();
    m_texts.clear();
    m_pictures.clear();
}

const std::string* Tags::Find(const char* keyword) const {
    const TagRow* const row = Keywords::Find(keyword);
    const auto text = row ? m_texts.find(row->keywordPlace) : m_texts.end();
    return text == m_texts.end() ? nullptr : &text->second;
}

Tags::Pictures::const_iterator Tags::BestPicture() const {
    for (const int32_t number : kShownFirst)
        if (const auto picture = m_pictures.find(number); picture != m_pictures.end()) return picture;
    return m_pictures.begin();
}

Tags::Pictures::const_iterator Tags::PictureAt(size_t index) const {
    return index < m_pictures.size() ? m_asked.Find(m_pictures, index) : m_pictures.end();
}
