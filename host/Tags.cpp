#include "host/Tags.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "host/Report.h"
#include "host/Require.h"
#include "platform/base/Utf.h"
#include "riff/TagTable.h"

namespace Tags {
namespace {

std::string KeptNames() {
    std::vector<std::string> names;
    for (uint32_t place = 1; const TagRow* const row = FindTagShownAt(place); ++place)
        if (IsKept(row->id)) names.emplace_back(row->keyword);
    return fmt::format("{}", fmt::join(names, ", "));
}

uint32_t ParseName(const std::string& given) {
    const TagRow* const row = FindTagByKeyword(given);
    if (!row)
        throw UsageFailure(fmt::format("There is no tag named \"{}\"; the names are {}.",
                                       Report::Printable(given), KeptNames()));
    if (!IsKept(row->id))
        throw UsageFailure(
            fmt::format("A WAV file can't keep the tag {}; it keeps {}.", row->keyword, KeptNames()));
    return row->id;
}

std::u16string ParseNumber(uint32_t id, const std::string& text) {
    int32_t number = -1;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < 0)
        throw UsageFailure(fmt::format("{} must be a number from 0 to 2147483647, not \"{}\".", Name(id),
                                       Report::Printable(text)));
    return number == 0 ? u"" : Utf::FromUtf8(std::to_string(number));
}

// Spaces at the ends are never stored.
std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

TagChange ParseSet(const std::string& given) {
    const size_t separator = given.find('=');
    if (separator == std::string::npos)
        throw UsageFailure(fmt::format("\"{}\" is no NAME=VALUE.", Report::Printable(given)));
    const uint32_t id = ParseName(given.substr(0, separator));
    const std::string value = Trimmed(given.substr(separator + 1));
    if (IsNumber(id) && !value.empty()) return {id, ParseNumber(id, value)};
    return {id, Utf::FromUtf8(value)};
}

std::u16string TextOf(IAC3Metadata& metadata, uint32_t id) {
    char16_t* text = nullptr;
    metadata.GetString(id, &text);  // a missing text stays null
    std::u16string copy = text ? text : u"";
    metadata.Free(text);
    return copy;
}

std::u16string NumberOf(IAC3Metadata& metadata, uint32_t id) {
    const auto number = static_cast<int32_t>(metadata.GetLong(id));  // files hold signed numbers
    return number == 0 ? u"" : Utf::FromUtf8(std::to_string(number));
}

}  // namespace

std::vector<TagChange> ParseChanges(const std::vector<std::string>& sets,
                                    const std::vector<std::string>& clears) {
    std::vector<TagChange> changes;
    changes.reserve(clears.size() + sets.size());
    for (const std::string& name : clears) changes.push_back({ParseName(name), {}});
    for (const std::string& given : sets) changes.push_back(ParseSet(given));
    return changes;
}

void Apply(const std::vector<TagChange>& changes, TagSet& tags) {
    for (const TagChange& change : changes) {
        tags.erase(change.id);
        if (!change.value.empty()) tags[change.id] = change.value;
    }
}

TagSet Read(IAC3Metadata& metadata) {
    TagSet tags;
    for (const uint32_t id : ShownIds()) {
        std::u16string value = IsNumber(id) ? NumberOf(metadata, id) : TextOf(metadata, id);
        if (!value.empty()) tags[id] = std::move(value);
    }
    return tags;
}

void Store(const TagSet& tags, IAC3Metadata& metadata) {
    for (const auto& [id, value] : tags) {
        if (!IsKept(id)) continue;
        if (IsNumber(id))
            Require(metadata.SetLong(id, static_cast<uint32_t>(std::stol(Utf::ToUtf8(value)))));
        else
            Require(metadata.SetString(id, value.c_str()));
    }
}

const std::vector<uint32_t>& ShownIds() {
    static const std::vector<uint32_t> s_ids = [] {
        std::vector<uint32_t> ids;
        for (uint32_t place = 1; const TagRow* const row = FindTagShownAt(place); ++place)
            if ((row->uses & TAG_READ) && std::find(ids.begin(), ids.end(), row->id) == ids.end())
                ids.push_back(row->id);
        return ids;
    }();
    return s_ids;
}

bool IsNumber(uint32_t id) { return FindTagById(id)->kind == TagKind::Number; }

bool IsKept(uint32_t id) { return (FindTagById(id)->uses & TAG_WRITTEN) != 0; }

std::string Name(uint32_t id) { return std::string(FindTagById(id)->keyword); }

}  // namespace Tags
