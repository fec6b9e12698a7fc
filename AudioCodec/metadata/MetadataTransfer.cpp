#include "AudioCodec/metadata/MetadataTransfer.h"

#include <algorithm>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AudioCodec/shell/object/HandedOut.h"
#include "riff/TagTable.h"

namespace {

bool IsSpace(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

// White space, a sign, digits, as `_wtol` of the platform's runtime reads them; what doesn't fit ends
// at the limit.
int32_t ToNumber(std::u16string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    const bool negative = text.starts_with(u'-');
    if (negative || text.starts_with(u'+')) text.remove_prefix(1);
    const int64_t limit = int64_t{std::numeric_limits<int32_t>::max()} + negative;
    int64_t value = 0;
    for (; !text.empty() && text.front() >= u'0' && text.front() <= u'9'; text.remove_prefix(1))
        value = std::min(value * 10 + (text.front() - u'0'), limit);
    return static_cast<int32_t>(negative ? -value : value);
}

void AddText(TagList& tags, const TagRow& row, IAC3Metadata& metadata) {
    HandedOutText text(metadata);
    // Without memory there may be a text: the tag must not vanish from the file for that.
    if (metadata.GetString(row.id, text.Put()) == RESULT_NO_MEMORY) throw std::bad_alloc();
    if (text.Get()) AddTag(tags, row.keyword, text.Get());
}

void AddNumber(TagList& tags, const TagRow& row, int32_t number, ZeroNumbers zeros) {
    if (number == 0 && zeros == ZeroNumbers::Drop) return;
    const std::string digits = std::to_string(number);
    AddTag(tags, row.keyword, std::u16string(digits.begin(), digits.end()));
}

struct LastTag {
    const TagRow* row = nullptr;  // the attribute's first; null: no tag is for it
    std::u16string_view value;
};
// For each attribute the value that stands at the end, where each tag overwrites the one before it.
std::vector<LastTag> LastOfEach(const TagList& tags) {
    std::vector<LastTag> last(TagTable().size());
    for (const auto& [name, value] : tags) {
        // A second word for an attribute stands for what the first one means.
        if (const TagRow* const row = FindTagByName(name))
            last[PlaceOfAttribute(*row)] = {&TagTable()[PlaceOfAttribute(*row)], value};
    }
    return last;
}

}  // namespace

void TagsToMetadata(const TagList& tags, IAC3Metadata& metadata) {
    for (const auto& [row, value] : LastOfEach(tags)) {
        if (!row) continue;
        const Result set = row->kind == TagKind::Text
                               ? metadata.SetString(row->id, value.data())
                               : metadata.SetLong(row->id, static_cast<uint32_t>(ToNumber(value)));
        // Saved again, what is missing here would be gone from the file.
        if (set == RESULT_NO_MEMORY) throw std::bad_alloc();
    }
}

void TagsAsWritten(TagList& written, const TagList& tags) {
    std::vector<std::optional<std::u16string_view>> values(TagTable().size() + 1);  // by the written place
    for (const auto& [row, value] : LastOfEach(tags))
        if (row && row->writtenPlace != 0) values[row->writtenPlace] = value;
    for (uint32_t place = 1; const TagRow* const row = FindTagWrittenAt(place); ++place) {
        if (!values[place]) continue;
        if (row->kind == TagKind::Text)
            AddTag(written, row->keyword, *values[place]);
        else
            AddNumber(written, *row, ToNumber(*values[place]), ZeroNumbers::Drop);
    }
}

void MetadataToTags(TagList& tags, IAC3Metadata& metadata, ZeroNumbers zeros) {
    TagList made;
    for (uint32_t place = 1; const TagRow* const row = FindTagWrittenAt(place); ++place) {
        if (row->kind == TagKind::Text)
            AddText(made, *row, metadata);
        else
            AddNumber(made, *row, static_cast<int32_t>(metadata.GetLong(row->id)), zeros);
    }
    tags = std::move(made);
}
