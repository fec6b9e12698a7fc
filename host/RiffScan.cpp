#include "host/RiffScan.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

#include "host/Failure.h"
#include "host/FileBytes.h"
#include "riff/InfoList.h"
#include "riff/TagEntries.h"
#include "riff/TagTable.h"

namespace {

constexpr uint64_t kTagBytesMost = uint64_t{64} << 20;
constexpr size_t kEntryBlock = 16384;  // bytes

// Known to the module, or nothing but room.
constexpr uint32_t kNotForeign[] = {ChunkId::kFmt, ChunkId::kData, ChunkId::kFact, ChunkId::kJunk,
                                    ChunkId::kPad};

// An id as text in quotes; bytes that aren't printable become "?".
std::string ChunkName(uint32_t id) {
    std::string name = "\"";
    for (int shift = 0; shift < 32; shift += 8) {
        const auto byte = static_cast<char>(id >> shift & 0xFF);
        name += byte >= 0x20 && byte < 0x7F ? byte : '?';
    }
    return name + '"';
}

// What is stored as an entry under that name; null for a name that no tag has there.
const TagRow* FindEntry(const std::string& name) {
    const TagRow* const row = FindTagByName(name);
    return row && (row->uses & TAG_WRITTEN) ? row : nullptr;
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
            if (!FindEntry(name)) names.Add(name);
        }
        const std::string_view rest = entries.Rest();
        const size_t nameEnd = rest.find_first_of(std::string_view("=\0", 2));
        if (nameEnd != rest.npos && rest[nameEnd] == 0) break;  // no entry, whatever follows
        bytes.erase(0, bytes.size() - rest.size());
    }
    return walk.Skip(size);
}

// The chunks of a file, without a look into its list.
class Scanner {
public:
    // `takeList` gets the walk after the type of each "INFO" list; the last one counts.
    using TakeList = std::function<void(ChunkWalk& walk)>;

    explicit Scanner(const std::string& path) : m_file(path) { m_scan.fileSize = m_file.Size(); }

    // False where the file is no RIFF WAVE.
    bool Run(const TakeList& takeList);

    RiffScan m_scan;

private:
    void EnterList(ChunkWalk& walk, const TakeList& takeList);

    FileBytes m_file;
    bool m_listSeen = false;
};

bool Scanner::Run(const TakeList& takeList) {
    uint8_t header[kFileHeaderSize];
    if (!m_file.Read(header, sizeof header) || LoadLE32(header) != ChunkId::kRiff ||
        LoadLE32(header + 8) != ChunkId::kWave)
        return false;
    m_scan.declaredSize = uint64_t{LoadLE32(header + 4)} + kChunkHeaderSize;
    ChunkWalk walk(m_file, ByteOrder::Little, sizeof header);
    while (walk.Next()) {
        const uint32_t id = walk.Current().id;
        if (id == ChunkId::kList)
            EnterList(walk, takeList);
        else if (std::find(std::begin(kNotForeign), std::end(kNotForeign), id) == std::end(kNotForeign))
            m_scan.foreign.Add(ChunkName(id));
    }
    return true;
}

void Scanner::EnterList(ChunkWalk& walk, const TakeList& takeList) {
    uint8_t type[kListTypeSize] = {};
    const uint64_t size = walk.Current().size;
    const bool typed = size >= sizeof type && walk.Read(type, sizeof type);
    if (!typed || LoadLE32(type) != ChunkId::kInfo) {
        m_scan.foreign.Add("list " + ChunkName(LoadLE32(type)));
        return;
    }
    if (std::min(size, m_file.Size() - std::min(m_file.Size(), m_file.Place())) > kTagBytesMost)
        throw Failure("The file's tags take more than 64 MiB; that is more than is handled here.");
    m_scan.olderLists = std::exchange(m_listSeen, true);
    takeList(walk);
}

// What the scan tells of an "INFO" list, in place of what an older list left there.
class ListScan {
public:
    ListScan(ChunkWalk& walk, RiffScan& scan, ForeignTexts texts)
        : m_walk(walk), m_scan(scan), m_texts(texts) {}

    void Run();

private:
    bool Take(uint32_t id, uint32_t held, uint32_t kept);

    ChunkWalk& m_walk;
    RiffScan& m_scan;
    const ForeignTexts m_texts;
    std::vector<uint32_t> m_foreign;
    bool m_entriesSeen = false;
};

void ListScan::Run() {
    m_scan.tags.clear();
    m_scan.texts = {};
    m_scan.entries = {};
    WalkInfoList(m_walk, [this](uint32_t id, uint32_t held, uint32_t kept) { return Take(id, held, kept); });
    std::sort(m_foreign.begin(), m_foreign.end());
    m_foreign.erase(std::unique(m_foreign.begin(), m_foreign.end()), m_foreign.end());
    for (const uint32_t id : m_foreign) m_scan.texts.Add(ChunkName(id));
}

// Of several chunks with one id the first counts.
bool ListScan::Take(uint32_t id, uint32_t held, uint32_t kept) {
    if (id == kTagChunk) {
        if (std::exchange(m_entriesSeen, true)) return m_walk.Skip(held);
        return NameEntries(m_walk, kept, m_scan.entries) && m_walk.Skip(held - kept);
    }
    if (!FindTagByChunk(id)) {
        if (m_texts == ForeignTexts::Name) m_foreign.push_back(id);
        return m_walk.Skip(held);
    }
    if (m_scan.tags.Find(id)) return m_walk.Skip(held);
    std::string bytes(held, '\0');
    if (!m_walk.Read(bytes.data(), held)) return false;
    m_scan.tags.Set(id, std::string_view(bytes).substr(0, kept));
    return true;
}

}  // namespace

RiffScan ScanRiff(const std::string& path, ForeignTexts texts) {
    Scanner scanner(path);
    scanner.Run([&](ChunkWalk& walk) { ListScan(walk, scanner.m_scan, texts).Run(); });
    return std::move(scanner.m_scan);
}

void RefuseHugeTags(const std::string& path) {
    Scanner(path).Run([](ChunkWalk&) {});
}

bool ReadInfoOf(const std::string& path, InfoChunks& info) {
    InfoChunks list;
    if (!Scanner(path).Run([&](ChunkWalk& walk) { ReadInfoList(walk, list); })) return false;
    info = std::move(list);
    return true;
}
