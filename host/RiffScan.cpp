#include "host/RiffScan.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

constexpr size_t kHeaderSize = 8;  // id and size
constexpr uint32_t kRiff = FourCC("RIFF");
constexpr uint32_t kWave = FourCC("WAVE");
constexpr uint32_t kFormat = FourCC("fmt ");
constexpr uint32_t kAudio = FourCC("data");
constexpr uint32_t kList = FourCC("LIST");
constexpr uint32_t kInfo = FourCC("INFO");
// Known to the module, or nothing but room.
constexpr uint32_t kNotForeign[] = {kFormat, kAudio, FourCC("fact"), FourCC("JUNK"), FourCC("PAD ")};

struct Chunk {
    uint32_t id;
    uint32_t size;
};

class Scanner {
public:
    Scanner(const std::string& path, uint64_t size) : m_file(path, std::ios::binary) {
        m_scan.fileSize = size;
    }
    RiffScan Run();

private:
    // Fewer bytes than asked for where the file ends.
    std::string Read(uint64_t size) {
        std::string bytes(std::min(size, m_scan.fileSize), '\0');
        m_file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        bytes.resize(static_cast<size_t>(m_file.gcount()));
        return bytes;
    }
    uint32_t ReadWord() {
        const std::string bytes = Read(4);
        return bytes.size() == 4 ? LoadLE32(reinterpret_cast<const uint8_t*>(bytes.data())) : 0;
    }
    void TakeList(const Chunk& chunk);
    void TakeInfo(std::string_view list);
    void TakeEntries(std::string_view bytes);

    std::ifstream m_file;
    RiffScan m_scan;
    bool m_listSeen = false;
};

RiffScan Scanner::Run() {
    const uint32_t riff = ReadWord();
    const uint64_t declared = uint64_t{ReadWord()} + kHeaderSize;
    if (riff != kRiff || ReadWord() != kWave) return std::move(m_scan);
    m_scan.declaredSize = declared;
    uint64_t place = 12;
    uint64_t reached = place;  // seeking costs the stream its buffer: a tail of zeros is a million chunks
    while (place + kHeaderSize <= m_scan.fileSize) {
        m_file.clear();
        if (reached != place) m_file.seekg(static_cast<std::streamoff>(place));
        const uint32_t id = ReadWord();
        const Chunk chunk{id, ReadWord()};
        reached = id == kList ? 0 : place + kHeaderSize;
        if (id == kList)
            TakeList(chunk);
        else if (std::find(std::begin(kNotForeign), std::end(kNotForeign), id) == std::end(kNotForeign))
            m_scan.foreign.insert(ChunkName(id));
        place += kHeaderSize + uint64_t{chunk.size} + (chunk.size & 1);
    }
    return std::move(m_scan);
}

void Scanner::TakeList(const Chunk& chunk) {
    const uint32_t type = chunk.size >= sizeof type ? ReadWord() : 0;
    if (type != kInfo) {
        m_scan.foreign.insert("list " + ChunkName(type));
        return;
    }
    m_scan.olderLists = std::exchange(m_listSeen, true);
    m_scan.info.clear();
    m_scan.entryNames.clear();
    TakeInfo(Read(chunk.size - sizeof type));
}

void Scanner::TakeInfo(std::string_view list) {
    while (list.size() > kHeaderSize) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(list.data());
        const Chunk chunk{LoadLE32(bytes), LoadLE32(bytes + 4)};
        list.remove_prefix(kHeaderSize);
        m_scan.info.try_emplace(chunk.id, list.substr(0, chunk.size));
        list.remove_prefix(std::min<uint64_t>(list.size(), uint64_t{chunk.size} + (chunk.size & 1)));
    }
    if (const auto tags = m_scan.info.find(InfoChunk::kTags); tags != m_scan.info.end())
        TakeEntries(tags->second);
}

// Entries are name, "=", two bytes of mark, UTF-16 units, a unit of 0; a zero byte ends the last.
void Scanner::TakeEntries(std::string_view bytes) {
    constexpr size_t kUnit = 2;
    for (;;) {
        const size_t separator = bytes.find_first_of(std::string_view("=\0", 2));
        if (separator == std::string_view::npos || bytes[separator] != '=') return;
        std::string name(bytes.substr(0, separator));
        std::transform(name.begin(), name.end(), name.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; });
        size_t end = separator + 1 + kUnit;
        while (end + kUnit <= bytes.size() && (bytes[end] != 0 || bytes[end + 1] != 0)) end += kUnit;
        if (end + kUnit > bytes.size()) return;
        bytes.remove_prefix(end + kUnit);
        m_scan.entryNames.insert(std::move(name));
    }
}

}  // namespace

RiffScan ScanRiff(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return {};  // reading a pipe would take its bytes away
    const uint64_t size = std::filesystem::file_size(path, error);
    return error ? RiffScan{} : Scanner(path, size).Run();
}

std::string ChunkName(uint32_t id) {
    std::string name = "\"";
    for (int shift = 0; shift < 32; shift += 8) {
        const auto byte = static_cast<char>(id >> shift & 0xFF);
        name += byte >= 0x20 && byte < 0x7F ? byte : '?';
    }
    return name + '"';
}
