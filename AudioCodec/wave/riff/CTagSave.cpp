#include "AudioCodec/wave/riff/CTagSave.h"

#include <algorithm>

#include "riff/WaveFormat.h"

namespace {

constexpr uint64_t kLargestTail = 1 << 20;
constexpr uint64_t kLargestNumber = 0xFFFFFFFF;
constexpr uint64_t kRiffSizePlace = 4;
constexpr uint64_t kCrowdedBytes = 65536;  // with so many older lists in them they are changed at once
constexpr std::ptrdiff_t kCrowd = 64;
constexpr uint64_t kFormatPlace = 20;  // of the record, in the writer's layout

// C: after the old list, which must stay whole in step 1, and after the place of the new one, which step 2
// writes while the copy has to stay whole.
// The first such place that leaves no gap after either end, or one that a chunk header fits into.
uint64_t FindCopyPlace(uint64_t oldEnd, uint64_t newEnd) {
    const uint64_t larger = std::max(oldEnd, newEnd);
    const uint64_t gap = larger - std::min(oldEnd, newEnd);
    return gap == 0 || gap >= kChunkHeaderSize ? larger : larger + kChunkHeaderSize;
}

}  // namespace

bool CTagSave::Run(const InfoChunks& chunks) {
    // Nothing is written before the plan stands.
    const uint64_t size = InfoEntriesSize(chunks);
    if (!Plan(size)) return false;
    if (size != 0)
        PutInfoList(chunks, [this](const void* bytes, size_t count) {
            m_list.append(static_cast<const char*>(bytes), count);
        });
    return Store();
}

bool CTagSave::Run(std::string_view entries) {
    if (!Plan(entries.size())) return false;
    if (!entries.empty()) {
        uint8_t header[kChunkHeaderSize + kListTypeSize];
        PutInfoHeader(header, entries.size());
        m_list.append(reinterpret_cast<const char*>(header), sizeof header).append(entries);
        if (entries.size() & 1) m_list += '\0';
    }
    return Store();
}

// Until the copy is in, all of it can be taken back, except the cut of what no reader sees.
bool CTagSave::Store() {
    if (!DropUnfinishedList() || !SetSizeRight() || !WrapTail() || !RewriteFormat()) return false;
    return m_list.empty() ? RemoveLists() : StoreList();
}

// Everything that can refuse: a walk that fails, a tail too large to copy, a number above 32 bits. `entries`:
// their bytes.
bool CTagSave::Plan(uint64_t entries) {
    if (!m_layout.Read(m_handle)) return false;
    if (entries + kListTypeSize > kLargestNumber || m_layout.Tail() > kLargestTail) return false;
    if (m_layout.Last().size > kLargestNumber || m_layout.Data().Content() > kLargestNumber) return false;
    // The memory too: once the file is being changed, none is taken for the list any more.
    const uint64_t list = entries == 0 ? 0 : kChunkHeaderSize + kListTypeSize + entries + (entries & 1);
    m_list.reserve(list);
    const uint64_t tail = m_layout.Tail();
    // The tail will be a chunk by then: with a header in front, and a pad byte after it if it is odd.
    m_end = m_layout.End() + (tail == 0 ? 0 : kChunkHeaderSize + tail + (tail & 1));
    m_place = m_layout.EndsWithList() ? m_layout.Last().offset : m_end;
    // The RIFF size has 32 bits. The copy alone may reach further, for as long as it stands.
    if (m_place + list > kLargestNumber) return false;
    m_copyAt = m_place == m_end ? m_end : FindCopyPlace(m_end, m_place + list);
    // The filler of step 2 spans all of this, and a header's size has 32 bits.
    return m_copyAt - m_place <= kLargestNumber;
}

// The RIFF size may tell of less than the file holds, never of more.
bool CTagSave::LowerRiffSize() {
    const uint64_t end = m_layout.End();
    return (m_layout.RiffEnd() <= end || WriteRiffSize(end)) && m_file.Flush();
}

// What lies after the last chunk without being a tail is a list whose id never came.
bool CTagSave::DropUnfinishedList() {
    if (m_layout.Tail() != 0 || m_layout.End() >= m_file.Size()) return true;
    return LowerRiffSize() && m_file.Cut(m_end);
}

// Before anything is put after the chunk: the walk must get there, over its size and over a pad byte that the
// file may lack. Under the old size that byte would count as content.
bool CTagSave::SetSizeRight() {
    const WaveChunk& last = m_layout.Last();
    if (!WriteNumber(last.offset + 4, static_cast<uint32_t>(last.size))) return false;
    return m_layout.End() <= m_file.Size() || (m_file.Flush() && m_file.Write(m_file.Size(), "", 1));
}

// What stands at the end and is no chunk becomes one, so that the list after it can be reached. It moves by a
// header's size, over itself; a second copy after it stays until that is done, since half a move loses bytes.
// With the RIFF size in front of it, no save takes it for a chunk meanwhile.
bool CTagSave::WrapTail() {
    const auto tail = static_cast<uint32_t>(m_layout.Tail());
    if (tail == 0) return true;
    std::string chunk(kChunkHeaderSize + tail + (tail & 1), '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(chunk.data());
    StoreLE32(bytes, ChunkId::kJunk);
    StoreLE32(bytes + 4, tail);
    return m_file.Read(m_layout.End(), bytes + kChunkHeaderSize, tail) && LowerRiffSize() &&
           m_file.Write(m_end, bytes + kChunkHeaderSize, tail) && m_file.Flush() &&
           m_file.Write(m_layout.End(), chunk.data(), chunk.size()) && m_file.Flush() && m_file.Cut(m_end);
}

// A file laid out as the writer does it gets the writer's header anew: the block align as the reader
// corrected it, and a pad byte of 0. Extra bytes are as they were.
bool CTagSave::RewriteFormat() {
    if (!m_format || !m_layout.IsWritersOwn(*m_format)) return true;
    uint8_t record[kFormatFixedSize];
    m_format->StoreFixed(record);
    const WaveChunk& data = m_layout.Data();
    return m_file.Write(kFormatPlace, record, std::min(m_format->DiskSize(), kFormatFixedSize)) &&
           (!(data.size & 1) || m_file.Write(data.End() - 1, "", 1));
}

bool CTagSave::StoreList() {
    // Step 1 is done: the copy is on the medium and is what a reader takes. It stays, whatever fails now.
    if (!AppendCopy()) return false;
    m_file.Keep();
    // Where no list ends the file, the copy is in its place already.
    if (m_place != m_copyAt) return MoveIntoPlace();
    return m_layout.Lists().empty() || (MakeOlderListsFiller() && m_file.Flush());
}

bool CTagSave::AppendCopy() {
    // Step 1. The gap has to be a chunk before the copy is there, or a walk would take its bytes for a
    // header. The same goes for the end in front of it: under a size that lies the copy would be audio, and
    // before what was cut off it would not be the end.
    const uint64_t end = m_copyAt + m_list.size();
    const uint64_t gap = m_copyAt - m_end;
    if (gap != 0 && !WriteChunkHeader(m_end, ChunkId::kJunk, gap - kChunkHeaderSize)) return false;
    if (!m_file.Flush()) return false;
    StoreLE32(reinterpret_cast<uint8_t*>(m_list.data()), ChunkId::kUnfinished);
    if (!m_file.Write(m_copyAt, m_list.data(), m_list.size()) || !m_file.Flush()) return false;
    // The id comes last: until it stands, a walk passes over the copy, so a torn write shows the old list.
    // The RIFF size comes with it, since it never tells of more than is there.
    return WriteNumber(m_copyAt, ChunkId::kList) && WriteRiffSize(end) && m_file.Flush();
}

bool CTagSave::MoveIntoPlace() {
    // Step 2. One header turns old list, gap and the place of the new one into filler that ends at the copy.
    // Under it bytes may be torn without a walk seeing them, once it is on the medium.
    const uint64_t end = m_place + m_list.size();
    const uint64_t gap = m_copyAt - end;
    const uint32_t size = LoadLE32(reinterpret_cast<const uint8_t*>(m_list.data()) + 4);
    if (!WriteChunkHeader(m_place, ChunkId::kJunk, m_copyAt - m_place - kChunkHeaderSize) || !m_file.Flush())
        return false;
    if (!m_file.Write(m_place + kChunkHeaderSize, m_list.data() + kChunkHeaderSize,
                      m_list.size() - kChunkHeaderSize))
        return false;
    // Before the list's own header: as soon as that tells the shorter size, a walk comes to this one; and it
    // reads the entries, of which torn ones might fail it.
    if (gap != 0 && !WriteChunkHeader(end, ChunkId::kJunk, gap - kChunkHeaderSize)) return false;
    if (!m_file.Flush()) return false;
    // Now both lists are whole and equal, so it doesn't matter which a reader takes. Step 3: the size, then
    // the cut; the flush between them keeps a crash from leaving the cut without the list.
    return WriteChunkHeader(m_place, ChunkId::kList, size) && MakeOlderListsFiller() && WriteRiffSize(end) &&
           m_file.Flush() && m_file.Cut(end) && m_file.Flush();
}

// The list that a reader takes goes last: until then the old tags are whole, and a failure takes back what
// happened to the older ones.
bool CTagSave::RemoveLists() {
    // The end first: the RIFF size is to tell of what is there.
    if (!m_file.Flush() || !MakeOlderListsFiller() || !WriteRiffSize(m_place) || !m_file.Flush())
        return false;
    if (m_place < m_file.Size()) return m_file.Cut(m_place) && m_file.Flush();
    m_file.Keep();
    return true;
}

// The last one goes after the others are gone for good, so that no reader finds an older one instead. Lists
// in a crowd are changed by the block: written back with other ids, each of which is old or new at any
// moment, as if it had been written alone.
bool CTagSave::MakeOlderListsFiller() {
    const Places& lists = m_layout.Lists();
    if (lists.empty()) return true;
    const auto last = lists.end() - 1;
    for (auto list = lists.begin(); list != last;) {
        // The places ascend, as the walk found them.
        const auto end = std::lower_bound(list, last, *list + kCrowdedBytes);
        const bool done = end - list < kCrowd
                              ? std::all_of(list, end, [this](uint64_t place) { return MakeFiller(place); })
                              : MakeFiller(list, end);
        if (!done) return false;
        list = end;
    }
    return *last == m_place || (m_file.Flush() && MakeFiller(*last));
}

bool CTagSave::MakeFiller(uint64_t place) { return WriteNumber(place, ChunkId::kJunk); }

bool CTagSave::MakeFiller(Places::const_iterator list, const Places::const_iterator& end) {
    const uint64_t start = *list;
    std::string block(*(end - 1) + sizeof(uint32_t) - start, '\0');
    if (!m_file.Read(start, block.data(), block.size())) return false;
    for (; list != end; ++list)
        StoreLE32(reinterpret_cast<uint8_t*>(block.data()) + (*list - start), ChunkId::kJunk);
    return m_file.Write(start, block.data(), block.size());
}

bool CTagSave::WriteNumber(uint64_t place, uint32_t number) {
    uint8_t bytes[4];
    StoreLE32(bytes, number);
    return m_file.Write(place, bytes, sizeof bytes);
}

bool CTagSave::WriteChunkHeader(uint64_t place, uint32_t id, uint64_t size) {
    uint8_t header[kChunkHeaderSize];
    StoreLE32(header, id);
    StoreLE32(header + 4, static_cast<uint32_t>(size));
    return m_file.Write(place, header, sizeof header);
}

bool CTagSave::WriteRiffSize(uint64_t end) {
    return WriteNumber(kRiffSizePlace,
                       static_cast<uint32_t>(std::min(end - kChunkHeaderSize, kLargestNumber)));
}
