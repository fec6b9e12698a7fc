#include "host/TagLimits.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdlib>

#include "AudioCodec/attributes/AttributeIds.h"
#include "host/Ansi.h"
#include "host/Report.h"
#include "platform/base/Utf.h"

namespace TagLimits {
namespace {

constexpr size_t kYearDigits = 4;      // what a reader takes of a date
constexpr size_t kTrackChunkMost = 2;  // a longer one is an archival location and stays as it is

// Stored in Windows-1252; every other text is UTF-16.
constexpr uint32_t kNarrowTags[] = {ATTR_TITLE,   ATTR_ARTIST,    ATTR_ALBUM,
                                    ATTR_COMMENT, ATTR_COPYRIGHT, ATTR_GENRE};
// Chunks that a tag of their own is stored in; the module drops or rewrites them.
constexpr uint32_t kTagChunks[] = {FourCC("INAM"),   FourCC("IART"),    FourCC("IPRD"),
                                   FourCC("ICMT"),   FourCC("ICOP"),    FourCC("IGNR"),
                                   InfoChunk::kDate, InfoChunk::kTrack, InfoChunk::kTags};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool HoldsTrack(const std::string& chunk) {
    return !chunk.empty() && chunk.size() <= kTrackChunkMost && IsDigit(chunk[0]);
}

const std::string* Find(const RiffScan& scan, uint32_t id) {
    const auto entry = scan.info.find(id);
    return entry == scan.info.end() ? nullptr : &entry->second;
}

// The number that a text begins with, as a reader takes it; empty for 0.
std::u16string LeadingNumber(const std::string& text) {
    const long long number = std::strtoll(text.c_str(), nullptr, 10);
    return number == 0 ? u"" : Utf::FromUtf8(std::to_string(static_cast<int32_t>(number)));
}

struct Stored {
    std::u16string value;  // what a reader will find
    const char* reason;    // why it may be another one
};

Stored Foresee(uint32_t id, const std::u16string& value, const RiffScan& before) {
    if (std::find(std::begin(kNarrowTags), std::end(kNarrowTags), id) != std::end(kNarrowTags))
        return {Ansi::ToUtf16(Ansi::FromUtf16(value)), "the file keeps it in Windows-1252"};
    const std::string* const track = Find(before, InfoChunk::kTrack);
    if (id == ATTR_TRACK && track && !HoldsTrack(*track))
        return {!track->empty() && IsDigit((*track)[0]) ? LeadingNumber(*track) : u"",
                "the file's \"IARL\" holds more than a track of one or two digits and stays as it is"};
    if (id != ATTR_YEAR) return {value, ""};
    std::string date = value.empty() ? "0" : Utf::ToUtf8(value);
    const std::string* const oldDate = Find(before, InfoChunk::kDate);
    if (oldDate && oldDate->size() > kYearDigits) date += oldDate->substr(kYearDigits);
    return {LeadingNumber(date.substr(0, kYearDigits)), "readers take the first four characters of the date"};
}

std::string Quoted(const std::u16string& value) {
    return value.empty() ? "nothing" : '"' + Report::Printable(Utf::ToUtf8(value)) + '"';
}

bool IsTagChunk(uint32_t id) {
    return std::find(std::begin(kTagChunks), std::end(kTagChunks), id) != std::end(kTagChunks);
}

// Chunks, and what of the "INFO" list has no tag to go into.
void AddDroppedChunks(const RiffScan& before, std::vector<std::string>& parts) {
    parts.assign(before.foreign.begin(), before.foreign.end());
    for (const auto& [id, content] : before.info) {
        const std::string text = content.substr(0, content.find('\0'));
        const bool location = id == InfoChunk::kTrack && !std::all_of(text.begin(), text.end(), IsDigit);
        if (!IsTagChunk(id) || location) parts.push_back("text " + ChunkName(id));
        if (id == InfoChunk::kDate && text.size() > kYearDigits)
            parts.push_back(fmt::format("\"{}\" of the date", Report::Printable(text.substr(kYearDigits))));
    }
}

}  // namespace

TagSet Foresee(const std::string& file, const TagSet& tags, const RiffScan& before) {
    TagSet foreseen;
    for (const uint32_t id : Tags::ShownIds()) {
        if (!Tags::IsKept(id)) continue;
        const auto tag = tags.find(id);
        const std::u16string value = tag == tags.end() ? u"" : tag->second;
        Stored stored = Foresee(id, value, before);
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
    if (!inPlace) AddDroppedChunks(before, parts);
    if (before.olderLists) parts.emplace_back("what stands in older lists \"INFO\"");
    for (const std::string& name : before.entryNames)
        if (Tags::IdStoredAs(name) == 0)
            parts.push_back("tag " + Report::Printable(Utf::ToUtf8(Ansi::ToUtf16(name))));
    return fmt::format("{}", fmt::join(parts, ", "));
}

}  // namespace TagLimits
