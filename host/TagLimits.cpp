// The host's own account of what the module makes of a tag, one function for each form of chunk. What was
// written is compared with it, so an error on either side shows as a difference.
#include "host/TagLimits.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>

#include "host/Ansi.h"
#include "host/Report.h"
#include "platform/base/Utf.h"
#include "riff/TagTable.h"

namespace TagLimits {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The bytes of the chunk of that form; nothing where there is none.
std::optional<std::string> ChunkOf(const RiffScan& scan, TagForm form) {
    for (const auto& [id, bytes] : scan.tags)
        if (FindTagByChunk(id)->form == form) return std::string(bytes);
    return std::nullopt;
}

// The number that a text begins with, as a reader takes it; empty for 0.
std::u16string LeadingNumber(const std::string& text) {
    // The attribute has 32 bits; what doesn't fit into them is cut.
    const long long number = std::strtoll(text.c_str(), nullptr, 10);
    return number == 0 ? u"" : Utf::FromUtf8(std::to_string(static_cast<int32_t>(number)));
}

struct Stored {
    std::u16string value;  // what a reader will find
    const char* reason;    // why it may be another one
};

Stored ForeseeText(const std::u16string& value, const RiffScan&) {
    return {Ansi::ToUtf16(Ansi::FromUtf16(value)), "the file keeps it in Windows-1252"};
}

Stored ForeseeTrack(const std::u16string& value, const RiffScan& before) {
    const std::optional<std::string> track = ChunkOf(before, TagForm::Track);
    // The place is free, or what is there is a track that gives way to the new one.
    if (!track || HoldsTrack(*track)) return {value, ""};
    return {!track->empty() && IsDigit((*track)[0]) ? LeadingNumber(*track) : u"",
            "the file's \"IARL\" holds more than a track of one or two digits and stays as it is"};
}

Stored ForeseeDate(const std::u16string& value, const RiffScan& before) {
    // The editor stores a year that isn't set as 0, in front of the old month and day.
    std::string date = value.empty() ? "0" : Utf::ToUtf8(value);
    const std::optional<std::string> oldDate = ChunkOf(before, TagForm::Date);
    if (oldDate && oldDate->size() > kYearDigits) date += oldDate->substr(kYearDigits);
    return {LeadingNumber(date.substr(0, kYearDigits)), "readers take the first four characters of the date"};
}

Stored ForeseeEntry(const std::u16string& value, const RiffScan&) { return {value, ""}; }

struct FormRule {
    TagForm form;
    Stored (*foresee)(const std::u16string& value, const RiffScan& before);
};
constexpr FormRule kFormRules[] = {{TagForm::None, ForeseeEntry},
                                   {TagForm::Text, ForeseeText},
                                   {TagForm::Date, ForeseeDate},
                                   {TagForm::Track, ForeseeTrack}};

Stored ForeseeTag(const TagRow& row, const std::u16string& value, const RiffScan& before) {
    const auto* const rule = std::find_if(std::begin(kFormRules), std::end(kFormRules),
                                          [&](const FormRule& entry) { return entry.form == row.form; });
    return rule->foresee(value, before);
}

std::string Quoted(const std::u16string& value) {
    return value.empty() ? "nothing" : '"' + Report::Printable(Utf::ToUtf8(value)) + '"';
}

// Chunks, and what of the "INFO" list has no tag to go into.
void AddDroppedChunks(const RiffScan& before, std::vector<std::string>& parts) {
    before.foreign.AppendTo(parts, [](const std::string& name) { return name; });
    const std::string date = ChunkOf(before, TagForm::Date).value_or("");
    // Of a date only the year is a tag; month and day would be lost in a new file.
    const std::string text = date.substr(0, date.find('\0'));
    if (text.size() > kYearDigits)
        parts.push_back(fmt::format("\"{}\" of the date", Report::Printable(text.substr(kYearDigits))));
    const std::string track = ChunkOf(before, TagForm::Track).value_or("");
    const std::string location = track.substr(0, track.find('\0'));
    if (!std::all_of(location.begin(), location.end(), IsDigit)) parts.emplace_back("text \"IARL\"");
    before.texts.AppendTo(parts, [](const std::string& name) { return "text " + name; });
}

}  // namespace

TagSet Foresee(const std::string& file, const TagSet& tags, const RiffScan& before) {
    TagSet foreseen;
    for (const uint32_t id : Tags::ShownIds()) {
        if (!Tags::IsKept(id)) continue;
        // A tag that isn't set is foreseen as well: the file's own bytes may still give it a value.
        const auto tag = tags.find(id);
        const std::u16string value = tag == tags.end() ? u"" : tag->second;
        Stored stored = ForeseeTag(*FindTagById(id), value, before);
        if (stored.value != value)
            Report::Complain(file,
                             fmt::format("Warning: {} becomes {} instead of {}, because {}.", Tags::Name(id),
                                         Quoted(stored.value), Quoted(value), stored.reason));
        if (!stored.value.empty()) foreseen[id] = std::move(stored.value);
    }
    return foreseen;
}

std::string Dropped(const RiffScan& before, bool inPlace) {
    std::vector<std::string> parts;
    // The rest goes in any case: a reader has never seen older lists, and the entries are made
    // anew from tags.
    if (!inPlace) AddDroppedChunks(before, parts);
    if (before.olderLists) parts.emplace_back("what stands in older lists \"INFO\"");
    before.entries.AppendTo(parts, [](const std::string& name) {
        return "tag " + Report::Printable(Utf::ToUtf8(Ansi::ToUtf16(name)));
    });
    return fmt::format("{}", fmt::join(parts, ", "));
}

}  // namespace TagLimits
