#include "capi/TagTransfer.h"

#include <cstdlib>
#include <span>
#include <string>

#include "AudioCodec/shell/object/HandedOut.h"
#include "capi/Keywords.h"
#include "capi/ModuleFailure.h"
#include "platform/base/Utf.h"

namespace {

// A half of a pair that stands alone has no UTF-8; some would even come out as another byte.
void ReplaceLoneHalves(std::span<char16_t> text) {
    const auto isHigh = [](char16_t unit) { return (unit & 0xFC00) == 0xD800; };
    const auto isLow = [](char16_t unit) { return (unit & 0xFC00) == 0xDC00; };
    for (size_t i = 0; i < text.size(); ++i) {
        if (isHigh(text[i]) && i + 1 < text.size() && isLow(text[i + 1]))
            ++i;
        else if (isHigh(text[i]) || isLow(text[i]))
            text[i] = u'\uFFFD';
    }
}

std::string TextOf(IAC3Metadata& metadata, uint32_t id) {
    HandedOutText text(metadata);
    if (metadata.GetString(id, text.Put()) == RESULT_NO_MEMORY) throw std::bad_alloc();
    if (!text.Get()) return {};  // one that isn't there
    const std::span units(text.Get(), std::char_traits<char16_t>::length(text.Get()));
    ReplaceLoneHalves(units);
    return Utf::ToUtf8({units.data(), units.size()});
}

std::string NumberOf(IAC3Metadata& metadata, uint32_t id) {
    const auto number = static_cast<int32_t>(metadata.GetLong(id));  // files hold signed numbers
    return number == 0 ? std::string() : std::to_string(number);
}

uint32_t NumberFrom(const std::string& text) {
    return static_cast<uint32_t>(std::strtol(text.c_str(), nullptr, 10));
}

Result Store(const TagRow& row, const std::string& text, IAC3Metadata& metadata) {
    if (row.kind == TagKind::Number) return metadata.SetLong(row.id, NumberFrom(text));
    return metadata.SetString(row.id, Utf::FromUtf8(text).c_str());
}

// As it is; one that isn't there stays away.
Result Copy(const TagRow& row, IAC3Metadata& from, IAC3Metadata& to) {
    if (row.kind == TagKind::Number) {
        const uint32_t number = from.GetLong(row.id);
        return number == 0 ? RESULT_OK : to.SetLong(row.id, number);
    }
    HandedOutText text(from);
    if (from.GetString(row.id, text.Put()) == RESULT_NO_MEMORY) return RESULT_NO_MEMORY;
    return text.Get() ? to.SetString(row.id, text.Get()) : RESULT_OK;
}

}  // namespace

Tags ReadTags(IAC3Metadata& metadata) {
    Tags tags;
    for (size_t index = 0; const TagRow* const row = Keywords::At(index); ++index)
        if (row->uses & TAG_READ)
            tags.Put(*row,
                     row->kind == TagKind::Number ? NumberOf(metadata, row->id) : TextOf(metadata, row->id));
    return tags;
}

void StoreTags(const Tags& tags, IAC3Metadata& empty) {
    for (size_t index = 0; const TagRow* const row = Keywords::At(index); ++index) {
        const std::string& text = tags.TextOf(*row);
        if ((row->uses & TAG_WRITTEN) && !text.empty())
            RequireModule(Store(*row, text, empty), "Handing the tags to", "the module");
    }
}

void StoreChangedTags(const Tags& tags, const Tags& before, IAC3Metadata& present, IAC3Metadata& empty) {
    for (size_t index = 0; const TagRow* const row = Keywords::At(index); ++index) {
        const std::string& text = tags.TextOf(*row);
        if (!(row->uses & TAG_WRITTEN)) continue;
        Result result = RESULT_OK;
        if (text == before.TextOf(*row))
            result = Copy(*row, present, empty);
        else if (!text.empty())
            result = Store(*row, text, empty);
        RequireModule(result, "Handing the tags to", "the module");
    }
}
