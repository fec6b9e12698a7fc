#include "capi/handles/SourceRest.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "capi/chunks/NameSample.h"
#include "capi/chunks/SourceChunks.h"
#include "riff/InfoList.h"
#include "riff/TagEntries.h"
#include "riff/TagTable.h"

namespace {

constexpr size_t kEntryBlock = 16384;  // bytes
constexpr size_t kDateMost = 64;       // bytes of one that are told

// In AIFF, the first of each.
constexpr uint32_t kOnceATag[] = {FourCC("NAME"), FourCC("AUTH"), FourCC("(c) "), FourCC("ANNO")};

// A control character would reach a terminal.
std::string Printable(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
    return text;
}

// Whether a tag is stored under that name in files that are made.
bool IsKeptEntry(const std::string& name) {
    const TagRow* const row = FindTagByName(name);
    return row && (row->uses & TAG_WRITTEN);
}

// Takes the bytes of a "vltg" chunk by the block: there may be many, and only the names in them are wanted.
bool NameEntries(ChunkWalk& walk, uint32_t size, NameSample& names) {
    std::string bytes;  // from the first entry that isn't whole yet
    std::string name;
    while (size != 0) {
        // At least as much as is there, so that a long entry isn't searched for its end over and over.
        const size_t begun = bytes.size();
        const auto more = static_cast<uint32_t>(std::min<size_t>(size, std::max(kEntryBlock, begun)));
        bytes.resize(begun + more);
        if (!walk.Read(bytes.data() + begun, more)) return false;
        size -= more;
        TagEntryReader entries(bytes);
        while (entries.Next()) {
            name = entries.Name();
            std::transform(name.begin(), name.end(), name.begin(), [](char c) {
                return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
            });
            if (!IsKeptEntry(name)) names.Add(name);
        }
        const std::string_view rest = entries.Rest();
        const size_t nameEnd = rest.find_first_of(std::string_view("=\0", 2));
        if (nameEnd != rest.npos && rest[nameEnd] == 0) break;  // no entry, whatever follows
        bytes.erase(0, bytes.size() - rest.size());
    }
    return walk.Skip(size);
}

// Of the last "INFO" list, what has no tag to go into.
struct ListRest {
    NameSample texts;
    NameSample entries;
    std::string dateTail;  // of a date only the year is a tag
    bool hasLocation = false;

    void Take(ChunkWalk& walk);

private:
    bool TakeEntry(ChunkWalk& walk, uint32_t id, uint32_t held, uint32_t kept);
};

void ListRest::Take(ChunkWalk& walk) {
    *this = {};
    std::vector<uint32_t> seen;
    WalkInfoList(walk, [&](uint32_t id, uint32_t held, uint32_t kept) {
        // Of several chunks with one id the first counts.
        if (std::find(seen.begin(), seen.end(), id) != seen.end()) return walk.Skip(held);
        if (FindTagByChunk(id) || id == kTagChunk) seen.push_back(id);
        return TakeEntry(walk, id, held, kept);
    });
}

bool ListRest::TakeEntry(ChunkWalk& walk, uint32_t id, uint32_t held, uint32_t kept) {
    if (id == kTagChunk) return NameEntries(walk, kept, entries) && walk.Skip(held - kept);
    const TagRow* const row = FindTagByChunk(id);
    if (!row) texts.Add(ChunkName(id));
    if (!row || row->form == TagForm::Text) return walk.Skip(held);
    std::string bytes(std::min<size_t>(kept, kDateMost), '\0');
    if (!walk.Read(bytes.data(), bytes.size()) || !walk.Skip(held - bytes.size())) return false;
    bytes.resize(bytes.find('\0') == bytes.npos ? bytes.size() : bytes.find('\0'));
    if (row->form == TagForm::Date && bytes.size() > kYearDigits) dateTail = bytes.substr(kYearDigits);
    if (row->form == TagForm::Track)
        hasLocation = !std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= '0' && c <= '9'; });
    return true;
}

class RestScan {
public:
    RestScan(Input& input, const SourceFacts& facts) : m_chunks(input, facts) {}

    SourceRest Run() {
        while (m_chunks.Next()) TakeChunk(m_chunks.Current());
        SourceRest rest;
        m_old.AppendTo(rest.old, [](const std::string& name) { return name; });
        rest.lost = LostParts();
        return rest;
    }

private:
    void TakeChunk(const Chunk& chunk) {
        const std::string name = (m_chunks.ListType() != 0 ? "list " : "") +
                                 ChunkName(m_chunks.ListType() != 0 ? m_chunks.ListType() : chunk.id);
        switch (m_chunks.Fate()) {
            case ChunkFate::Tags:
                m_olderLists = std::exchange(m_listSeen, true);
                m_list.Take(m_chunks.Walk());
                break;
            case ChunkFate::Own:
                if (IsATag(chunk.id) && !m_tags.insert(chunk.id).second) m_lost.Add("a further " + name);
                break;
            case ChunkFate::Old:
                m_old.Add(name);
                break;
            case ChunkFate::Lost:
                m_lost.Add(name);
                break;
            case ChunkFate::Carried:
                break;
        }
    }

    static bool IsATag(uint32_t id) {
        return std::find(std::begin(kOnceATag), std::end(kOnceATag), id) != std::end(kOnceATag);
    }

    std::vector<std::string> LostParts() const {
        std::vector<std::string> parts;
        m_lost.AppendTo(parts, [](const std::string& name) { return name; });
        if (!m_list.dateTail.empty()) parts.push_back('"' + Printable(m_list.dateTail) + "\" of the date");
        if (m_list.hasLocation) parts.emplace_back("text \"IARL\"");
        m_list.texts.AppendTo(parts, [](const std::string& name) { return "text " + name; });
        if (m_olderLists) parts.emplace_back("what stands in older lists \"INFO\"");
        m_list.entries.AppendTo(parts, [](const std::string& name) { return "tag " + Printable(name); });
        return parts;
    }

    SourceChunks m_chunks;
    NameSample m_lost;
    NameSample m_old;
    std::set<uint32_t> m_tags;  // that came already
    ListRest m_list;
    bool m_listSeen = false;
    bool m_olderLists = false;
};

// In order nothing is carried: what would have been is lost.
SourceRest RestOfPassed(const SourceFacts& facts) {
    NameSample lost;
    NameSample old;
    for (const uint32_t id : facts.passed) {
        Chunk chunk;
        chunk.id = id;
        const ChunkFate fate = FateOf(chunk, 0, facts.isWave, false);
        if (fate == ChunkFate::Lost) lost.Add(ChunkName(id));
        if (fate == ChunkFate::Old) old.Add(ChunkName(id));
    }
    SourceRest rest;
    lost.AppendTo(rest.lost, [](const std::string& name) { return name; });
    old.AppendTo(rest.old, [](const std::string& name) { return name; });
    return rest;
}

}  // namespace

SourceRest FindSourceRest(Input& input, const SourceFacts& facts) {
    return input.IsSeekable() ? RestScan(input, facts).Run() : RestOfPassed(facts);
}
