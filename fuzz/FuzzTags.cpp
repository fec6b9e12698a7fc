// Texts of tags: what was read is written and comes back, for the entries of "vltg", for those of an "INFO"
// list, and for a list in which some entries change.
#include <map>

#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagChanges.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "fuzz/ScriptBytes.h"
#include "fuzz/TagAttributes.h"
#include "platform/com/RefPtr.h"
#include "riff/InfoList.h"
#include "riff/InfoListEdit.h"
#include "riff/TagEntries.h"

namespace {

using Entries = std::vector<std::pair<std::string, std::u16string>>;

Entries EntriesOf(std::string_view bytes) {
    Entries entries;
    for (TagEntryReader reader(bytes); reader.Next();) {
        entries.emplace_back(reader.Name(), u"old");
        reader.Value(entries.back().second);
    }
    return entries;
}

void PlayTagEntries(std::string_view bytes) {
    const Entries entries = EntriesOf(bytes);
    std::string written;
    for (const auto& [name, value] : entries) AppendTagEntry(written, name, value);
    Check(EntriesOf(written + '\0') == entries, "entries come back as they were written");
}

// The entries of a list as a map. A last one without a byte is none.
std::map<uint32_t, std::string> MapOf(const InfoChunks& chunks) {
    std::map<uint32_t, std::string> map;
    for (const auto& [id, bytes] : chunks) map.emplace(id, bytes);
    return map;
}

InfoChunks ChunksOf(std::string_view entries) {
    InfoChunks chunks;
    ReadInfoEntries(entries, chunks);
    return chunks;
}

void PlayInfoList(const InfoChunks& chunks) {
    std::string list;
    PutInfoList(chunks, [&](const void* bytes, size_t count) {
        list.append(static_cast<const char*>(bytes), count);
    });
    Check(list.size() == InfoEntriesSize(chunks) + kChunkHeaderSize + kListTypeSize, "a list is of its size");
    auto due = MapOf(chunks);
    if (!due.empty() && due.rbegin()->second.empty()) due.erase(std::prev(due.end()));
    const std::string_view entries = std::string_view(list).substr(kChunkHeaderSize + kListTypeSize);
    Check(MapOf(ChunksOf(entries)) == due, "a list comes back as it was written");
}

void PlayChanges(ScriptBytes script, std::string_view entries) {
    constexpr uint32_t kIds[] = {FourCC("INAM"), FourCC("ICRD"), FourCC("IARL"), FourCC("vltg")};
    std::vector<InfoChange> changes;
    auto due = MapOf(ChunksOf(entries));
    for (const uint32_t id : kIds) {
        const uint32_t what = script.Next();
        if (what < 85) continue;
        changes.push_back({id, std::nullopt});
        if (what > 170) changes.back().bytes = script.Text(1 + script.Next() % 20) + "!";
        due.erase(id);
        if (what > 170) due[id] = *changes.back().bytes;
    }
    // One without a byte is there or not, as another follows it.
    auto found = MapOf(ChunksOf(ChangeInfoEntries(entries, changes)));
    for (auto* map : {&due, &found})
        std::erase_if(*map, [](const auto& entry) { return entry.second.empty(); });
    Check(found == due, "what changes does, and nothing else");
}

// The second time: the first may lose what Windows-1252 lacks, and a year's fifth digit.
void PlayMapping(InfoChunks chunks, InfoEncoding encoding) {
    Entries before;
    for (int times = 0; times < 3; ++times) {
        TagList tags;
        ChunksToTags(tags, chunks, encoding);
        Entries found;
        // A year that isn't four bytes long takes the place of a part of what follows it.
        for (const auto& [name, value] : tags)
            if (name != "year") found.emplace_back(name, value);
        Check(times < 2 || found == before, "tags that were written are read as they were");
        before = std::move(found);
        TagsToChunks(tags, chunks, encoding);
    }
}

// A save of what a host wants, which finds it all in the file afterwards, and then has nothing to change.
void PlayWishes(ScriptBytes& script, const std::string& entries, InfoEncoding encoding) {
    const auto wanted = RefPtr<CMetadata>::Retain(new CMetadata);
    const InfoChunks chunks = ChunksOf(entries);
    TagList tags;
    ChunksToTags(tags, chunks, encoding);
    TagsToMetadata(tags, *wanted);
    SetTagAttributes(script, *wanted);
    const TagTexts due = WrittenTags(*wanted);
    std::optional<std::string> changed;
    try {
        const FailureByScript failure(script);
        changed = ChangedInfoEntries(entries, chunks, *wanted, encoding);
    } catch (const std::bad_alloc&) {
    }
    changed = ChangedInfoEntries(entries, chunks, *wanted, encoding);
    if (!changed) return;
    const InfoChunks after = ChunksOf(*changed);
    const auto found = RefPtr<CMetadata>::Retain(new CMetadata);
    TagList saved;
    ChunksToTags(saved, after, encoding);
    TagsToMetadata(saved, *found);
    // Windows-1252 alone can't hold all of them.
    Check(encoding == InfoEncoding::Ansi || WrittenTags(*found) == due,
          "a reader finds the tags that were wanted");
    Check(!ChangedInfoEntries(*changed, after, *wanted, encoding), "a second save has nothing to change");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptBytes script(data, size);
    ScriptBytes steps = script.Part(kHead);
    const InfoEncoding encoding = InfoEncodingOf(steps.Next() % 3);
    const std::string entries = script.Text(size);
    PlayTagEntries(entries);
    const InfoChunks chunks = ChunksOf(entries);
    PlayInfoList(chunks);
    PlayChanges(steps, entries);
    PlayMapping(chunks, encoding);
    PlayWishes(steps, entries, encoding);
    return 0;
}
