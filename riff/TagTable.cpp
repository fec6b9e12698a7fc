#include "riff/TagTable.h"

#include <algorithm>

namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; }

bool AreEqual(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return Lower(x) == Lower(y); });
}

template <class Matches>
const TagRow* Find(Matches&& matches) {
    const std::span<const TagRow> table = TagTable();
    const auto row = std::find_if(table.begin(), table.end(), matches);
    return row == table.end() ? nullptr : &*row;
}

// A bit for each number of letters that a name has.
uint64_t SizesOfNames() {
    uint64_t sizes = 0;
    for (const TagRow& row : TagTable())
        if (row.keyword.size() < 64) sizes |= uint64_t{1} << row.keyword.size();
    return sizes;
}

}  // namespace

bool HoldsTrack(std::string_view chunk) {
    return !chunk.empty() && chunk.size() <= kTrackChunkMost && chunk[0] >= '0' && chunk[0] <= '9';
}

const TagRow* FindTagById(uint32_t id) {
    return Find([id](const TagRow& row) { return row.id == id; });
}

size_t PlaceOfAttribute(const TagRow& row) {
    return static_cast<size_t>(FindTagById(row.id) - TagTable().data());
}

const TagRow* FindTagByChunk(uint32_t chunk) {
    return Find([chunk](const TagRow& row) { return chunk != 0 && row.chunk == chunk; });
}

const TagRow* FindTagByKeyword(std::string_view keyword) {
    return Find(
        [keyword](const TagRow& row) { return row.keywordPlace != 0 && AreEqual(row.keyword, keyword); });
}

const TagRow* FindTagByName(std::string_view name) {
    static const uint64_t s_sizes = SizesOfNames();
    if (name.empty() || name.size() >= 64 || !(s_sizes >> name.size() & 1)) return nullptr;
    // Asked for each entry of a file: size and last letter tell nearly all rows apart.
    return Find([name](const TagRow& row) {
        return row.keyword.size() == name.size() && row.keyword.back() == name.back() &&
               (row.uses & TAG_READ) && row.keyword == name;
    });
}

const TagRow* FindTagShownAt(uint32_t place) {
    return Find([place](const TagRow& row) { return place != 0 && row.keywordPlace == place; });
}

const TagRow* FindTagWrittenAt(uint32_t place) {
    return Find([place](const TagRow& row) { return place != 0 && row.writtenPlace == place; });
}
