#include "host/RiffScan.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "host/Failure.h"
#include "host/FileBytes.h"
#include "riff/InfoList.h"
#include "riff/TagEntries.h"
#include "riff/TagTable.h"

namespace {

constexpr uint64_t kTagBytesMost = uint64_t{64} << 20;

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

// The chunks of a file, without a look into its list.
class Scanner {
public:
    enum class Lists { Read, PassOver };

    explicit Scanner(const std::string& path, Lists lists = Lists::Read) : m_file(path), m_lists(lists) {
        m_scan.fileSize = m_file.Size();
    }

    bool Run();

    RiffScan m_scan;
    InfoChunks m_list;  // the last "INFO" list

private:
    void TakeList(ChunkWalk& walk);

    FileBytes m_file;
    const Lists m_lists;
    bool m_listSeen = false;
};

bool Scanner::Run() {
    uint8_t header[kFileHeaderSize];
    if (!m_file.Read(header, sizeof header) || LoadLE32(header) != ChunkId::kRiff ||
        LoadLE32(header + 8) != ChunkId::kWave)
        return false;
    m_scan.declaredSize = uint64_t{LoadLE32(header + 4)} + kChunkHeaderSize;
    ChunkWalk walk(m_file, ByteOrder::Little, sizeof header);
    while (walk.Next()) {
        const uint32_t id = walk.Current().id;
        if (id == ChunkId::kList)
            TakeList(walk);
        else if (std::find(std::begin(kNotForeign), std::end(kNotForeign), id) == std::end(kNotForeign))
            m_scan.foreign.Add(ChunkName(id));
    }
    return true;
}

void Scanner::TakeList(ChunkWalk& walk) {
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
    if (m_lists == Lists::Read) ReadInfoList(walk, m_list);
}

// What is stored as an entry under that name; null for a name that no tag has there.
const TagRow* FindEntry(const std::string& name) {
    const TagRow* const row = FindTagByName(name);
    return row && (row->uses & TAG_WRITTEN) ? row : nullptr;
}

void NameEntries(std::string_view bytes, NameSample& names) {
    std::string name;
    for (TagEntryReader entries(bytes); entries.Next();) {
        name = entries.Name();
        std::transform(name.begin(), name.end(), name.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; });
        if (!FindEntry(name)) names.Add(name);
    }
}

}  // namespace

RiffScan ScanRiff(const std::string& path) {
    Scanner scanner(path);
    scanner.Run();
    RiffScan& scan = scanner.m_scan;
    for (const auto& [id, bytes] : scanner.m_list) {
        if (id == kTagChunk)
            NameEntries(bytes, scan.entries);
        else if (FindTagByChunk(id))
            scan.tags.Set(id, bytes);
        else
            scan.texts.Add(ChunkName(id));
    }
    return std::move(scan);
}

void RefuseHugeTags(const std::string& path) { Scanner(path, Scanner::Lists::PassOver).Run(); }

bool ReadInfoOf(const std::string& path, InfoChunks& info) {
    Scanner scanner(path);
    if (!scanner.Run()) return false;
    info = std::move(scanner.m_list);
    return true;
}
