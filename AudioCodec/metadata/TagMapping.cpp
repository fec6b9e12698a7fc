#include "AudioCodec/metadata/TagMapping.h"

#include <algorithm>
#include <string_view>

#include "AudioCodec/metadata/TagChunk.h"
#include "riff/LittleEndian.h"

namespace {

constexpr uint32_t kDateChunk = FourCC("ICRD");
constexpr uint32_t kTrackChunk = FourCC("IARL");
constexpr uint32_t kTagChunk = FourCC("vltg");
constexpr size_t kYearDigits = 4;  // what counts of a date text as the year
constexpr size_t kTrackChunkMost =
    2;  // a longer "IARL" is an archival location, even if it begins with digits

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// What of a chunk's bytes is the text of its tag; false if the chunk gives none.
using TextOfChunk = bool (*)(std::string_view chunk, std::string_view& text);
// The bytes of the new chunk from the tag's narrow text.
using ChunkOfText = std::string (*)(std::string_view text, std::string_view oldDate);

bool WholeText(std::string_view chunk, std::string_view& text) {
    text = chunk.substr(0, chunk.find('\0'));
    return true;
}

bool YearOfDate(std::string_view chunk, std::string_view& text) {
    return WholeText(chunk.substr(0, kYearDigits), text);
}

bool LeadingNumber(std::string_view chunk, std::string_view& text) {
    text = chunk.substr(
        0, static_cast<size_t>(std::find_if_not(chunk.begin(), chunk.end(), IsDigit) - chunk.begin()));
    return !text.empty();
}

std::string Terminated(std::string_view text, std::string_view) { return std::string(text) + '\0'; }

// Month and day of the date that the file had go on behind the new year.
std::string YearBeforeOldDate(std::string_view text, std::string_view oldDate) {
    std::string date(text);
    if (oldDate.size() > kYearDigits) date += oldDate.substr(kYearDigits);
    return date + '\0';
}

struct TagRow {
    uint32_t chunk;
    const char16_t* tag;
    TextOfChunk textOf;
    ChunkOfText chunkOf;
};

constexpr TagRow kRows[] = {
    {FourCC("INAM"), u"title", WholeText, Terminated},
    {FourCC("IART"), u"artist", WholeText, Terminated},
    {FourCC("IPRD"), u"album", WholeText, Terminated},
    {FourCC("ICMT"), u"comment", WholeText, Terminated},
    {FourCC("ICOP"), u"copyright", WholeText, Terminated},
    {FourCC("IGNR"), u"genre", WholeText, Terminated},
    {kDateChunk, u"year", YearOfDate, YearBeforeOldDate},
    {kTrackChunk, u"track", LeadingNumber, Terminated},
};

// The row whose column holds the value; null if there is none.
template <class Value, class Column>
const TagRow* FindRow(const Value& value, Column TagRow::*column) {
    for (const TagRow& row : kRows) {
        if (value == row.*column) return &row;
    }
    return nullptr;
}

bool IsTrackChunk(std::string_view chunk) {
    return !chunk.empty() && chunk.size() <= kTrackChunkMost && IsDigit(chunk[0]);
}

}  // namespace

void ChunksToTags(TagList& tags, const CWaveFile::ChunkMap& chunks) {
    for (const auto& [id, bytes] : chunks) {
        if (id == kTagChunk) ParseTagChunk(tags, bytes);
        const TagRow* const row = FindRow(id, &TagRow::chunk);
        std::string_view text;
        if (!row || !row->textOf(bytes, text)) continue;
        CStr name(row->tag);
        CStr value(text.data(), static_cast<uint32_t>(text.size()));
        AddTag(tags, name, value);
    }
}

void TagsToChunks(TagList& tags, CWaveFile::ChunkMap& chunks) {
    const auto track = chunks.find(kTrackChunk);
    const bool trackAllowed = track == chunks.end() || IsTrackChunk(track->second);
    const auto date = chunks.find(kDateChunk);
    const std::string oldDate = date == chunks.end() ? std::string() : date->second;
    for (const TagRow& row : kRows) {
        if (row.chunk != kTrackChunk || trackAllowed) chunks.erase(row.chunk);
    }
    chunks.erase(kTagChunk);

    std::string tagBytes;
    for (TagEntry& entry : tags) {
        const TagRow* const row = FindRow(std::u16string_view(entry.name.Wide()), &TagRow::tag);
        if (!row) {
            AppendTagEntry(tagBytes, entry);
        } else if (row->chunk != kTrackChunk || trackAllowed) {
            const char* const narrow = entry.value.Narrow();
            chunks[row->chunk] = row->chunkOf(narrow ? narrow : "", oldDate);
        }
    }
    if (!tagBytes.empty()) chunks[kTagChunk] = tagBytes + '\0';
}
