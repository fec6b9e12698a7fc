#include "AudioCodec/metadata/TagMapping.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "riff/TagEntries.h"
#include "riff/TagTable.h"

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Finds the text of its tag in a chunk's bytes; false if there is none.
using TextOfChunk = bool (*)(std::string_view chunk, std::string_view& text);
// The bytes of the new chunk from the tag's narrow text, with what the file's chunk held before.
using ChunkOfText = std::string (*)(std::string_view text, std::string_view old);
// Whether the old chunk goes when the tags are stored anew.
using IsReplaced = bool (*)(std::string_view old);

bool WholeText(std::string_view chunk, std::string_view& text) {
    // Programs pad the text with zeros, or leave none at all: it ends at the first one, or with the chunk.
    text = TextOfInfoChunk(chunk);
    return true;
}

bool YearOfDate(std::string_view chunk, std::string_view& text) {
    return WholeText(chunk.substr(0, kYearDigits), text);
}

// A text that begins with no digit is an archival location, which is no tag: it must not come out as track 0.
bool LeadingNumber(std::string_view chunk, std::string_view& text) {
    const auto* const end = std::find_if_not(chunk.begin(), chunk.end(), IsDigit);
    text = chunk.substr(0, static_cast<size_t>(end - chunk.begin()));
    return !text.empty();
}

std::string Terminated(std::string_view text, std::string_view) { return std::string(text) + '\0'; }

// Month and day of the date that the file had go on after the new year.
std::string YearBeforeOldDate(std::string_view text, std::string_view old) {
    std::string date(text);
    if (old.size() > kYearDigits) date += old.substr(kYearDigits);
    return date + '\0';
}

bool Always(std::string_view) { return true; }

struct Form {
    TagForm form;
    TextOfChunk textOf;
    ChunkOfText chunkOf;
    IsReplaced isReplaced;
};
constexpr Form kForms[] = {
    {TagForm::Text, WholeText, Terminated, Always},
    {TagForm::Date, YearOfDate, YearBeforeOldDate, Always},
    {TagForm::Track, LeadingNumber, Terminated, HoldsTrack},
};

// Called for rows that have a chunk of their own, and each of these has one of the forms above.
const Form& FormOf(const TagRow& row) {
    return *std::find_if(std::begin(kForms), std::end(kForms),
                         [&](const Form& form) { return form.form == row.form; });
}

InfoEncoding EncodingOf(const TagRow& row, InfoEncoding ofTexts) {
    return row.form == TagForm::Text ? ofTexts : InfoEncoding::Ansi;
}

void AddEntry(TagList& tags, const TagEntryReader& entry) {
    std::u16string value;
    entry.Value(value);
    AddTag(tags, entry.Name(), value);
}

void AddEntries(TagList& tags, std::string_view bytes) {
    tags.Reserve(bytes.size());
    for (TagEntryReader entries(bytes); entries.Next();) AddEntry(tags, entries);
}

// Of the entries those that are the last for an attribute.
void AddLastEntries(TagList& tags, std::string_view bytes) {
    std::vector<std::optional<TagEntryReader>> last(TagTable().size());
    for (TagEntryReader entries(bytes); entries.Next();)
        if (const TagRow* const row = FindTagByName(LoweredTagName(entries.Name())))
            last[PlaceOfAttribute(*row)] = entries;
    for (const auto& entry : last)
        if (entry) AddEntry(tags, *entry);
}

void AddChunks(TagList& tags, const InfoChunks& chunks, InfoEncoding encoding,
               void (*addEntries)(TagList& tags, std::string_view bytes)) {
    for (const auto& [id, bytes] : chunks) {
        if (id == kTagChunk) addEntries(tags, bytes);
        const TagRow* const row = FindTagByChunk(id);
        std::string_view text;
        if (!row || !FormOf(*row).textOf(bytes, text)) continue;
        AddTag(tags, row->keyword, DecodeInfoText(text, EncodingOf(*row, encoding)));
    }
}

// Clearing first and writing then is what makes a tag that is gone from the list go from the file too. But
// some new chunks are made of old ones, so those are kept here until the last is written.
// The file's chunks of tags, taken out of the map; the new ones are made with what stood in some of them.
class OldChunks {
public:
    explicit OldChunks(InfoChunks& chunks) {
        for (const TagRow& row : TagTable()) {
            const auto bytes = row.chunk == 0 ? std::nullopt : chunks.Find(row.chunk);
            if (bytes) m_old.Set(row.chunk, *bytes);
            // Asked of the copy, so the answer is the same when the tag itself comes.
            if (bytes && IsFree(row)) chunks.Erase(row.chunk);
        }
        // Made anew as a whole: what it held of tags that are wanted is in the list.
        chunks.Erase(kTagChunk);
    }
    // Whether the tag has a place to go to.
    bool IsFree(const TagRow& row) const {
        const auto old = m_old.Find(row.chunk);
        return !old || FormOf(row).isReplaced(*old);
    }
    std::string_view Bytes(const TagRow& row) const {
        return m_old.Find(row.chunk).value_or(std::string_view());
    }

private:
    InfoChunks m_old;
};

// The tag's row where it is written into a chunk of its own.
const TagRow* FindOwnChunk(std::string_view name) {
    const TagRow* const row = FindTagByName(name);
    return row && row->chunk != 0 ? row : nullptr;
}

bool AreHeldByAnsi(const TagList& tags) {
    for (const auto& [name, value] : tags) {
        const TagRow* const row = FindOwnChunk(name);
        if (row && row->form == TagForm::Text && !IsHeldByAnsi(value)) return false;
    }
    return true;
}

}  // namespace

void ChunksToTags(TagList& tags, const InfoChunks& chunks, InfoEncoding encoding) {
    AddChunks(tags, chunks, encoding, AddEntries);
}

void TakeTags(TagList& tags, const InfoChunks& chunks, InfoEncoding encoding) {
    TagList found;
    AddChunks(found, chunks, encoding, AddLastEntries);
    if (tags.empty()) {
        tags = std::move(found);
        return;
    }
    std::vector<std::optional<TagEntry>> last(TagTable().size());
    for (const TagList* const list : {&std::as_const(tags), &std::as_const(found)})
        for (const TagEntry& entry : *list)
            if (const TagRow* const row = FindTagByName(entry.name)) last[PlaceOfAttribute(*row)] = entry;
    TagList taken;
    for (const auto& entry : last)
        if (entry) taken.Append(entry->name, entry->value);
    tags = std::move(taken);
}

void TagsToChunks(const TagList& tags, InfoChunks& chunks, InfoEncoding encoding) {
    const InfoEncoding written = WrittenEncoding(encoding, chunks, [&] { return AreHeldByAnsi(tags); });
    InfoChunks made = chunks;
    const OldChunks old(made);
    std::string entries;
    for (const auto& [name, value] : tags) {
        const TagRow* const row = FindOwnChunk(name);
        if (!row) {
            AppendTagEntry(entries, name, value);
        } else if (old.IsFree(*row)) {
            const std::string text = EncodeInfoText(value, EncodingOf(*row, written));
            made.Set(row->chunk, FormOf(*row).chunkOf(text, old.Bytes(*row)));
        }
    }
    if (!entries.empty()) made.Set(kTagChunk, entries += '\0');
    chunks = std::move(made);
}
