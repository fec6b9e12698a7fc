#include "riff/InfoListEdit.h"

#include <algorithm>
#include <vector>

#include "riff/SpanSource.h"

namespace {

constexpr size_t kNewBytes = 4096;  // that changes seldom add; more of them cost a copy of the list

const uint8_t* BytesOf(std::string_view text) { return reinterpret_cast<const uint8_t*>(text.data()); }

void AppendEntry(std::string& entries, uint32_t id, std::string_view bytes) {
    uint8_t header[kChunkHeaderSize];
    StoreLE32(header, id);
    StoreLE32(header + 4, static_cast<uint32_t>(bytes.size()));
    entries.append(reinterpret_cast<const char*>(header), sizeof header);
    entries += bytes;
    if (bytes.size() & 1) entries += '\0';
}

}  // namespace

std::string ChangeInfoEntries(std::string_view entries, std::span<const InfoChange> changes) {
    std::string changed;
    changed.reserve(entries.size() + kNewBytes);
    std::vector<bool> isPut(changes.size());
    size_t end = 0;  // of the last entry that is whole
    while (entries.size() > kChunkHeaderSize) {
        const uint32_t id = LoadLE32(BytesOf(entries));
        const uint32_t size = LoadLE32(BytesOf(entries) + 4);
        const uint32_t held = ExtentOfInfoEntry(size, entries.size() - kChunkHeaderSize).held;
        const auto change = std::find_if(changes.begin(), changes.end(),
                                         [id](const InfoChange& candidate) { return candidate.id == id; });
        const auto index = static_cast<size_t>(change - changes.begin());
        if (change == changes.end()) {
            changed += entries.substr(0, kChunkHeaderSize + held);
        } else if (change->bytes && !isPut[index]) {
            AppendEntry(changed, id, *change->bytes);
            isPut[index] = true;
        }
        // One without its pad byte, or cut off, is the last: nothing may come after it.
        if (change != changes.end() || held == uint64_t{size} + (size & 1)) end = changed.size();
        entries.remove_prefix(kChunkHeaderSize + held);
    }
    std::string fresh;
    for (size_t i = 0; i < changes.size(); ++i)
        if (changes[i].bytes && !isPut[i]) AppendEntry(fresh, changes[i].id, *changes[i].bytes);
    changed.insert(end, fresh);
    changed += entries;
    return changed;
}

void ReadInfoEntries(std::string_view entries, InfoChunks& chunks, InfoWanted wanted) {
    SpanSource source({BytesOf(entries), entries.size()});
    ChunkWalk walk(source, ByteOrder::Little, 0);
    walk.SetSize(entries.size() + kListTypeSize);  // as if it had come to the list and read its type
    ReadInfoList(walk, chunks, wanted);
}
