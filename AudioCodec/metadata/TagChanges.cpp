// (1) find what differs, (2) choose the encoding, (3) find for each tag its place: its own chunk, an entry of
// "vltg", or none, (4) change "vltg", (5) change the list. Nothing of the file is touched here.
#include "AudioCodec/metadata/TagChanges.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "riff/InfoListEdit.h"
#include "riff/TagEntries.h"
#include "riff/TagTable.h"

namespace {

using Value = std::optional<std::u16string>;  // nothing: no such tag

constexpr std::string_view kDigits = "0123456789";
constexpr size_t kNewEntries = 4096;  // bytes that the new ones of "vltg" seldom go beyond
constexpr size_t kCompactDate = 8;    // digits of year, month and day without anything between them

struct Difference {
    const TagRow* row;
    Value value;  // what is wanted
};

Value Find(const TagList& tags, const TagRow& row) {
    for (const auto& [name, value] : tags)
        if (name == row.keyword) return std::u16string(value);
    return std::nullopt;
}

// (1) Both sides in the form in which attributes are written, so that "07" and 7 are no difference.
std::vector<Difference> FindDifferences(const InfoChunks& chunks, IAC3Metadata& wanted,
                                        InfoEncoding encoding) {
    TagList found;
    TakeTags(found, chunks, encoding);
    TagList before;
    TagsAsWritten(before, found);
    TagList after;
    MetadataToTags(after, wanted, ZeroNumbers::Drop);
    std::vector<Difference> differences;
    for (uint32_t place = 1; const TagRow* const row = FindTagWrittenAt(place); ++place) {
        Value value = Find(after, *row);
        if (value != Find(before, *row)) differences.push_back({row, std::move(value)});
    }
    return differences;
}

// (2)
InfoEncoding ChooseEncoding(InfoEncoding encoding, const InfoChunks& chunks,
                            const std::vector<Difference>& differences) {
    const auto isHeld = [](const Difference& difference) {
        return difference.row->form != TagForm::Text || !difference.value || IsHeldByAnsi(*difference.value);
    };
    return WrittenEncoding(encoding, chunks,
                           [&] { return std::all_of(differences.begin(), differences.end(), isHeld); });
}

// Where a tag goes.
struct Placed {
    bool chunkStays = false;                // what stands in the tag's own chunk is something else
    std::optional<std::string> chunk = {};  // its content; nothing: it goes
    Value entry = {};                       // the value in "vltg"; nothing: it goes
};

// The number that a reader takes from such a chunk of the tag; nothing for 0 too.
Value NumberIn(const TagRow& row, std::string_view chunk) {
    TagList tags;
    ChunksToTags(tags, {{row.chunk, chunk}}, InfoEncoding::Ansi);
    TagList written;
    TagsAsWritten(written, tags);
    return Find(written, row);
}

// In the tag's own chunk, if a reader gets it back from there.
Placed PlaceNumber(const TagRow& row, const Value& value, std::string content) {
    if (NumberIn(row, content) == value) return {.chunk = std::move(content)};
    return {.entry = value};
}

Placed PlaceEntry(const Difference& tag, std::optional<std::string_view>, InfoEncoding) {
    return {.entry = tag.value};
}

Placed PlaceText(const Difference& tag, std::optional<std::string_view>, InfoEncoding encoding) {
    if (!tag.value) return {};
    return {.chunk = EncodeInfoText(*tag.value, encoding) + '\0'};
}

// Whether the date's first four digits are its year: the fifth character is none, or month and day follow at
// once, which tells 20040506 from 05061999.
bool BeginsWithYear(std::string_view date) {
    const size_t digits = std::min(date.find_first_not_of(kDigits), date.size());
    if (digits != kCompactDate) return digits == kYearDigits;
    const std::string_view month = date.substr(kYearDigits, 2);
    const std::string_view day = date.substr(kYearDigits + 2, 2);
    return month >= "01" && month <= "12" && day >= "01" && day <= "31";
}

Placed PlaceYear(const Difference& tag, std::optional<std::string_view> old, InfoEncoding) {
    if (!tag.value) return {};
    std::string date(tag.value->begin(), tag.value->end());
    // What has a sign or more digits can't stand in the old date, whatever that is.
    const bool fits = date.size() <= kYearDigits && date.find_first_not_of(kDigits) == std::string::npos;
    if (old && fits && BeginsWithYear(*old)) {
        date.insert(0, kYearDigits - date.size(), '0');
        date += old->substr(kYearDigits);
    }
    if (date.find('\0') == std::string::npos) date += '\0';
    return PlaceNumber(*tag.row, tag.value, date);
}

Placed PlaceTrack(const Difference& tag, std::optional<std::string_view> old, InfoEncoding) {
    const size_t end = old ? old->find_first_not_of(kDigits) : std::string_view::npos;
    // Digits, and at most blanks and zero bytes to pad them.
    const bool isLocation = end != std::string_view::npos &&
                            old->find_first_not_of(std::string_view(" \0", 2), end) != std::string_view::npos;
    if (isLocation) {
        // One that begins with a digit is read as a track: without the entry it would come back.
        const Value none = NumberIn(*tag.row, *old) ? Value(u"0") : std::nullopt;
        return {.chunkStays = true, .entry = tag.value ? tag.value : none};
    }
    if (!tag.value) return {};
    return PlaceNumber(*tag.row, tag.value, std::string(tag.value->begin(), tag.value->end()) + '\0');
}

struct Placer {
    TagForm form;
    Placed (*place)(const Difference& tag, std::optional<std::string_view> old, InfoEncoding encoding);
};
constexpr Placer kPlacers[] = {
    {TagForm::None, PlaceEntry},
    {TagForm::Text, PlaceText},
    {TagForm::Date, PlaceYear},
    {TagForm::Track, PlaceTrack},
};

// (3)
Placed Place(const Difference& tag, const InfoChunks& chunks, InfoEncoding encoding) {
    const auto* const placer = std::find_if(std::begin(kPlacers), std::end(kPlacers),
                                            [&](const Placer& row) { return row.form == tag.row->form; });
    return placer->place(tag, tag.row->chunk == 0 ? std::nullopt : chunks.Find(tag.row->chunk), encoding);
}

class ListChange {
public:
    ListChange(const InfoChunks& chunks, InfoEncoding encoding) : m_chunks(chunks), m_encoding(encoding) {}

    void Add(const Difference& tag) {
        Placed placed = Place(tag, m_chunks, m_encoding);
        if (tag.row->chunk != 0 && !placed.chunkStays)
            m_changes.push_back({tag.row->chunk, std::move(placed.chunk)});
        m_entries.push_back({tag.row, std::move(placed.entry)});
    }

    // Texts that stay, and are Windows-1252, become UTF-8. What stands after a text's end stays.
    void EncodeTheRest() {
        for (const TagRow& row : TagTable()) {
            const auto chunk = row.form == TagForm::Text ? m_chunks.Find(row.chunk) : std::nullopt;
            if (!chunk || IsChanged(row.chunk)) continue;
            const std::string_view text = TextOfInfoChunk(*chunk);
            if (!IsAnsiText(text)) continue;
            const std::string encoded =
                EncodeInfoText(DecodeInfoText(text, InfoEncoding::Ansi), InfoEncoding::Utf8);
            m_changes.push_back({row.chunk, encoded + std::string(chunk->substr(text.size()))});
        }
    }

    std::string Entries(std::string_view entries) {
        ChangeTagChunk();
        // In the order that a list of the module's own has, for those that are new.
        std::sort(m_changes.begin(), m_changes.end(),
                  [](const InfoChange& a, const InfoChange& b) { return a.id < b.id; });
        return ChangeInfoEntries(entries, m_changes);
    }

private:
    bool IsChanged(uint32_t chunk) const {
        return std::any_of(m_changes.begin(), m_changes.end(),
                           [chunk](const InfoChange& change) { return change.id == chunk; });
    }

    // (4) Each entry that speaks for a tag of m_entries goes; the first gives its place to the new one.
    void ChangeTagChunk() {
        const std::string_view old = m_chunks.Find(kTagChunk).value_or(std::string_view());
        std::string changed;
        changed.reserve(old.size() + kNewEntries);
        TagEntryReader reader(old);
        for (std::string_view left = old; reader.Next(); left = reader.Rest()) {
            const TagRow* const row = FindTagByName(LoweredTagName(reader.Name()));
            const auto tag = std::find_if(m_entries.begin(), m_entries.end(), [&](const Difference& entry) {
                return row && entry.row->id == row->id;
            });
            if (tag == m_entries.end())
                changed += left.substr(0, left.size() - reader.Rest().size());
            else
                Put(*tag, changed);
        }
        for (Difference& tag : m_entries) Put(tag, changed);
        // What is left over is the closing zero byte, or damage that no reader passes.
        const std::string_view rest = reader.Rest();
        const bool isEmpty = changed.empty() && rest.find_first_not_of('\0') == std::string_view::npos;
        changed += rest.empty() && !isEmpty ? std::string_view("\0", 1) : rest;
        if (isEmpty && old.find_first_not_of('\0') != std::string_view::npos)
            m_changes.push_back({kTagChunk, std::nullopt});
        else if (!isEmpty && changed != old)
            m_changes.push_back({kTagChunk, std::move(changed)});
    }

    static void Put(Difference& tag, std::string& changed) {
        if (tag.value) AppendTagEntry(changed, tag.row->keyword, *tag.value);
        tag.value.reset();
    }

    const InfoChunks& m_chunks;
    const InfoEncoding m_encoding;
    std::vector<InfoChange> m_changes;
    std::vector<Difference> m_entries;  // what "vltg" is to hold of the tags that differ
};

}  // namespace

std::optional<std::string> ChangedInfoEntries(std::string_view entries, const InfoChunks& chunks,
                                              IAC3Metadata& wanted, InfoEncoding encoding) {
    const std::vector<Difference> differences = FindDifferences(chunks, wanted, encoding);
    if (differences.empty()) return std::nullopt;
    const InfoEncoding written = ChooseEncoding(encoding, chunks, differences);
    ListChange change(chunks, written);
    for (const Difference& tag : differences) change.Add(tag);
    if (encoding == InfoEncoding::Either && written == InfoEncoding::Utf8 && !HoldUtf8Text(chunks))
        change.EncodeTheRest();
    // (5) A text that the encoding lacks may come out as the bytes that were there.
    std::string changed = change.Entries(entries);
    if (changed == entries) return std::nullopt;
    return changed;
}
