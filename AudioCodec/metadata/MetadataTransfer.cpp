#include "AudioCodec/metadata/MetadataTransfer.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/shell/object/HandedOut.h"

namespace {

enum class Kind { Text, Number };
enum class Way { Both, ReadOnly };  // ReadOnly comes in and is never written back

struct TagAttribute {
    const char16_t* tag;
    uint32_t id;
    Kind kind;
    Way way;
};

// In the order of writing.
constexpr TagAttribute kTagAttributes[] = {
    {u"title", ATTR_TITLE, Kind::Text, Way::Both},
    {u"artist", ATTR_ARTIST, Kind::Text, Way::Both},
    {u"album", ATTR_ALBUM, Kind::Text, Way::Both},
    {u"genre", ATTR_GENRE, Kind::Text, Way::Both},
    {u"composer", ATTR_COMPOSER, Kind::Text, Way::Both},
    {u"writer", ATTR_WRITER, Kind::Text, Way::Both},
    {u"comment", ATTR_COMMENT, Kind::Text, Way::Both},
    {u"copyright", ATTR_COPYRIGHT, Kind::Text, Way::Both},
    {u"band", ATTR_BAND, Kind::Text, Way::Both},
    {u"bpm", ATTR_BPM, Kind::Text, Way::Both},
    {u"year", ATTR_YEAR, Kind::Number, Way::Both},
    {u"day", ATTR_DAY, Kind::Number, Way::Both},
    {u"month", ATTR_MONTH, Kind::Number, Way::Both},
    {u"track", ATTR_TRACK, Kind::Number, Way::Both},
    {u"performer", ATTR_ARTIST, Kind::Text, Way::ReadOnly},
    {u"disc", ATTR_DISC, Kind::Text, Way::ReadOnly},
};

// The two tables name the same ids for both ways.
constexpr bool MatchesAttributeIds() {
    return std::all_of(std::begin(kMetadataIds), std::end(kMetadataIds), [](const MetadataId& row) {
        bool read = false;
        bool written = false;
        for (const TagAttribute& tag : kTagAttributes) {
            read = read || tag.id == row.id;
            written = written || (tag.id == row.id && tag.way == Way::Both);
        }
        return read == row.fromTags && written == row.toTags;
    });
}
static_assert(MatchesAttributeIds());

bool IsSpace(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

// White space, a sign, digits, as `_wtol` of the platform's runtime reads them; what doesn't fit ends at the
// limit.
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

void AddText(TagList& tags, const TagAttribute& row, IAC3Metadata& metadata) {
    HandedOutText text(metadata);
    metadata.GetString(row.id, text.Put());
    if (!text.Get()) return;
    CStr name(row.tag);
    CStr value(text.Get());
    AddTag(tags, name, value);
}

void AddNumber(TagList& tags, const TagAttribute& row, IAC3Metadata& metadata, ZeroNumbers zeros) {
    const auto number = static_cast<int32_t>(metadata.GetLong(row.id));
    if (number == 0 && zeros == ZeroNumbers::Drop) return;
    const std::string digits = std::to_string(number);
    CStr name(row.tag);
    CStr value(digits.data(), static_cast<uint32_t>(digits.size()));
    AddTag(tags, name, value);
}

}  // namespace

void TagsToMetadata(TagList& tags, IAC3Metadata& metadata) {
    for (TagEntry& entry : tags) {
        const std::u16string_view name(entry.name.Wide());
        const auto* const row = std::find_if(std::begin(kTagAttributes), std::end(kTagAttributes),
                                             [&](const TagAttribute& tag) { return tag.tag == name; });
        if (row == std::end(kTagAttributes)) continue;
        if (row->kind == Kind::Text)
            metadata.SetString(row->id, entry.value.Wide());
        else
            metadata.SetLong(row->id, static_cast<uint32_t>(ToNumber(entry.value.Wide())));
    }
}

void MetadataToTags(TagList& tags, IAC3Metadata& metadata, ZeroNumbers zeros) {
    tags.clear();
    for (const TagAttribute& row : kTagAttributes) {
        if (row.way == Way::ReadOnly) continue;
        if (row.kind == Kind::Text)
            AddText(tags, row, metadata);
        else
            AddNumber(tags, row, metadata, zeros);
    }
}
