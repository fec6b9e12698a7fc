#include "AudioCodec/wave/riff/CWaveFile.h"

#include <algorithm>
#include <new>
#include <vector>

#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/shell/object/Saturating.h"
#include "AudioCodec/wave/riff/CTagSave.h"
#include "AudioCodec/wave/riff/HandleSource.h"
#include "AudioCodec/wave/riff/Origin.h"
#include "AudioCodec/wave/riff/StreamSource.h"
#include "platform/file/FilePointer.h"
#include "riff/ChunkWalk.h"
#include "riff/InfoListEdit.h"

namespace {

// What the sizes in the headers can tell.
constexpr uint64_t kLargestFile = 0xFFFFFFFF;

Result OpenFailure() {
    return GetLastError() == ERROR_SHARING_VIOLATION ? RESULT_FILE_IN_USE : RESULT_CANNOT_OPEN;
}

}  // namespace

struct CWaveFile::ChunkRule {
    uint32_t id;
    uint32_t leastSize;  // a smaller chunk is passed over like an unknown one
    bool (*parse)(CWaveFile& file, ChunkWalk& walk);
};

CWaveFile::~CWaveFile() { CloseFile(); }

Result CWaveFile::OpenForReading(const char16_t* path, bool readOnly) {
    CloseFile();
    // A file takes the place of a stream; the stream stays the caller's.
    m_stream = nullptr;
    const DWORD access = readOnly ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    m_file = TakeFile(
        CreateFileW(path, access, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!m_file) return OpenFailure();
    // Set before the walk: whatever ends it, a file that was not understood is never rewritten.
    m_modified = false;
    m_writable = false;
    m_readOnly = readOnly;
    if (ParseChunks()) return RESULT_OK;
    m_file.reset();
    return RESULT_NOT_WAVE;
}

Result CWaveFile::OpenForWriting(const char16_t* path, bool overwrite) {
    CloseFile();
    m_stream = nullptr;
    m_readOnly = false;
    m_file = TakeFile(CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  overwrite ? CREATE_ALWAYS : CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    // Without overwriting the likely reason is a file that is there already, and none is told closer.
    if (!m_file) return overwrite ? OpenFailure() : RESULT_CANNOT_CREATE;
    m_modified = false;
    m_writable = false;
    return RESULT_OK;
}

void CWaveFile::AttachStream(IStream* stream) {
    CloseFile();
    m_stream = stream;
}

bool CWaveFile::ParseChunks() {
    // Places and texts of an earlier file must not outlive it. Its format does: see m_formatFound.
    m_dataSize = 0;
    m_dataOffset = 0;
    m_chunks.clear();
    m_entries.reset();
    m_entriesSize = 0;
    m_readFailed = m_file != nullptr;  // for want of memory too, which ends the walk by an exception
    bool walked = false;
    if (m_file) {
        HandleSource source(m_file.get());
        walked = Walk(source);
        m_readFailed = source.HasFailed();
    } else if (m_stream) {
        StreamSource source(*m_stream);
        walked = Walk(source);
    }
    // The walk left the place at its end; the first read is to find the audio.
    return walked && (m_dataOffset == 0 || MoveTo(m_dataOffset)) && m_formatFound;
}

bool CWaveFile::Walk(ByteSource& source) {
    uint8_t word[4] = {};
    if (!source.Read(word, sizeof word) || LoadLE32(word) != ChunkId::kRiff) return false;
    source.Read(word, sizeof word);  // the RIFF size is often wrong; neither it nor its absence matters
    if (!source.Read(word, sizeof word) || LoadLE32(word) != ChunkId::kWave) return false;

    ChunkWalk walk(source, ByteOrder::Little, kFileHeaderSize);
    while (walk.Next()) {
        if (!ParseChunk(walk)) return false;
    }
    return !walk.Refused();
}

bool CWaveFile::ParseChunk(ChunkWalk& walk) {
    static constexpr ChunkRule kRules[] = {
        {ChunkId::kFmt, kPcmFormatSize, [](CWaveFile& file, ChunkWalk& at) { return file.ParseFormat(at); }},
        {ChunkId::kList, kListTypeSize, [](CWaveFile& file, ChunkWalk& at) { return file.ParseList(at); }},
        {ChunkId::kData, 0, [](CWaveFile& file, ChunkWalk& at) { return file.ParseData(at); }},
        {ChunkId::kFact, kFactSampleCountSize, [](CWaveFile&, ChunkWalk& at) { return ParseFact(at); }},
    };
    const Chunk& chunk = walk.Current();
    for (const ChunkRule& rule : kRules) {
        if (chunk.id == rule.id && chunk.size >= rule.leastSize) return rule.parse(*this, walk);
    }
    return true;
}

bool CWaveFile::ParseFormat(ChunkWalk& walk) {
    const auto size = static_cast<uint32_t>(walk.Current().size);
    // The declared size is checked as a whole, though only the part that a format can have is read.
    if (!walk.Source().Holds(size)) return false;
    const uint32_t kept = std::min(size, kFormatFixedSize + kFormatExtraMost);
    uint8_t plain[kFormatFixedSize];  // nearly all records are that short
    std::vector<uint8_t> extended(kept > sizeof plain ? kept : 0);
    uint8_t* const record = extended.empty() ? plain : extended.data();
    if (!walk.Read(record, kept)) return false;
    m_format = WaveFormat::Load(record, kept);
    m_toldBlockAlign = m_format.blockAlign;
    // In a file the frame size is what channels and bits make it, whatever the record tells. A stream's is
    // kept as told, and its reader compares before it reads by it.
    if (m_file)
        m_format.blockAlign = static_cast<uint16_t>(uint32_t{m_format.bitsPerSample} * m_format.channels / 8);
    m_formatFound = true;
    return true;
}

bool CWaveFile::ParseList(ChunkWalk& walk) {
    uint8_t type[kListTypeSize];
    if (!walk.Read(type, sizeof type)) return false;
    if (LoadLE32(type) != ChunkId::kInfo) return true;
    // Of several lists the last wins whole. Its place is of use in a file alone, which can always tell it.
    if (m_file && !walk.Source().Tell(m_entriesPlace)) return false;
    m_entriesSize = walk.Current().size - kListTypeSize;
    return ReadInfoList(walk, m_chunks, m_wantedChunks);
}

bool CWaveFile::ParseData(ChunkWalk& walk) {
    // The walk goes on after the audio, so of several chunks the last is read.
    uint64_t position = 0;
    if (!walk.Source().Tell(position)) return false;
    m_dataOffset = static_cast<uint32_t>(position);
    m_dataSize = walk.Current().declared;
    return true;
}

bool CWaveFile::ParseFact(ChunkWalk& walk) {
    uint8_t sampleCount[kFactSampleCountSize];  // what the data chunk says is believed instead
    return walk.Read(sampleCount, sizeof sampleCount);
}

bool CWaveFile::ReadEntries(std::string& entries) const {
    entries.clear();
    if (!m_file || m_entriesSize == 0) return true;
    // The last bytes of a list may be told and not there.
    const uint64_t there = std::min(m_entriesSize, SizeOfFile(m_file.get()) - m_entriesPlace);
    if (there > InfoChunks::kMostBytes) throw std::bad_alloc();
    entries.resize(there);
    DWORD done = 0;
    return MoveTo(static_cast<int64_t>(m_entriesPlace)) &&
           ReadFile(m_file.get(), entries.data(), static_cast<DWORD>(there), &done, nullptr) && done == there;
}

void CWaveFile::SetEntries(std::string entries) {
    InfoChunks chunks;
    ReadInfoEntries(entries, chunks, m_wantedChunks);
    m_chunks = std::move(chunks);
    m_entries = std::move(entries);
}

bool CWaveFile::Move(int64_t distance, uint32_t origin, int64_t* position) const {
    if (m_file) return MoveFilePointer(m_file.get(), distance, origin, position);
    uint64_t place = 0;
    if (m_stream && !StreamSource(*m_stream).Move(distance, origin, &place)) return false;
    if (position) *position = static_cast<int64_t>(place);
    return true;
}

bool CWaveFile::MoveTo(int64_t position) const { return Move(position, ORIGIN_START); }

bool CWaveFile::Tell(int64_t& position) const {
    if (!m_file) return Move(0, ORIGIN_CURRENT, &position);
    position = TellFilePointer(m_file.get());
    return true;
}

void CWaveFile::BeginAudio(const WaveFormat& format) {
    m_format = format;
    m_dataSize = 0;
    m_chunks.clear();
    m_entries.reset();
    WriteHeader(false);
    m_formatFound = true;
    m_writable = true;
}

Result CWaveFile::WriteData(const void* bytes, uint32_t count) {
    if (!m_writable) return RESULT_FAILED;
    // Refused before a byte is written: the header's sizes couldn't tell of more.
    const uint64_t end = static_cast<uint64_t>(TellData()) + count;
    if (m_dataOffset + end > kLargestFile) return RESULT_WRITE_FAILED;
    DWORD done = 0;
    if (!WriteFile(m_file.get(), bytes, count, &done, nullptr) || done != count) {
        // A part may have been written. The header is to tell of what is there, so the file itself is asked.
        const DWORD size = m_file ? GetFileSize(m_file.get(), nullptr) : 0;
        if (m_file) m_dataSize = size - std::min(size, m_dataOffset);  // a full disk may lack even the header
        return RESULT_WRITE_FAILED;
    }
    // As the file's size would tell: a write in the middle, after a seek, adds nothing.
    m_dataSize = std::max(m_dataSize, static_cast<uint32_t>(end));
    m_modified = true;
    return RESULT_OK;
}

void CWaveFile::Write(const void* bytes, size_t count) const {
    DWORD done = 0;
    WriteFile(m_file.get(), bytes, static_cast<DWORD>(count), &done, nullptr);
}

// Where a created file ends that has so many bytes of entries in its list.
uint64_t CWaveFile::EndWithList(uint64_t entries) const {
    uint64_t end = uint64_t{m_dataOffset} + m_dataSize;
    if (entries != 0) end += kChunkHeaderSize + kListTypeSize + entries;
    // The pad byte of odd audio counts in the RIFF size, though not in that of "data". A list is even.
    return end + (end & 1);
}

bool CWaveFile::HasRoomForList() const {
    return m_chunks.empty() || EndWithList(InfoEntriesSize(m_chunks)) <= kLargestFile;
}

void CWaveFile::WriteHeader(bool final) noexcept {
    const uint32_t formatSize = m_format.DiskSize();
    // RIFF header 12, header of "fmt " 8, header of "data" 8.
    m_dataOffset = formatSize + 28;

    const uint64_t entries = HasRoomForList() ? InfoEntriesSize(m_chunks) : 0;
    const uint64_t end = EndWithList(entries);
    uint8_t front[20];
    StoreLE32(front, ChunkId::kRiff);
    StoreLE32(front + 4, static_cast<uint32_t>(end - kChunkHeaderSize));
    StoreLE32(front + 8, ChunkId::kWave);
    StoreLE32(front + 12, ChunkId::kFmt);
    StoreLE32(front + 16, formatSize);
    uint8_t record[kFormatFixedSize];
    m_format.StoreFixed(record);
    uint8_t data[kChunkHeaderSize];
    StoreLE32(data, ChunkId::kData);
    StoreLE32(data + 4, m_dataSize);

    MoveTo(0);
    Write(front, sizeof front);
    const uint32_t fixed = std::min(formatSize, kFormatFixedSize);
    Write(record, fixed);
    Write(m_format.extra.data(), formatSize - fixed);
    Write(data, sizeof data);
    MoveTo(int64_t{m_dataOffset} + m_dataSize);
    if (m_dataSize & 1) Write("", 1);
    if (final) {
        if (entries != 0) PutInfoList(m_chunks, [this](const void* bytes, size_t n) { Write(bytes, n); });
        SetEndOfFile(m_file.get());
    }
    // Audio is what comes next, after the header of an empty file.
    MoveTo(m_dataOffset);
}

Result CWaveFile::SaveTags() const noexcept {
    return AtBorder(RESULT_NO_MEMORY, [this] {
        CTagSave save(m_file.get(), m_keepFormat ? nullptr : &m_format);
        return (m_entries ? save.Run(*m_entries) : save.Run(m_chunks)) ? RESULT_OK : RESULT_WRITE_FAILED;
    });
}

Result CWaveFile::WriteChanges() noexcept {
    if (!m_file || m_readOnly || !m_modified) return RESULT_OK;
    m_modified = false;
    // A file that was made here is finished as a whole. One that was there before may hold chunks that nobody
    // here understands, so it is edited in place.
    if (!m_writable) return SaveTags();
    WriteHeader(true);
    return HasRoomForList() ? RESULT_OK : RESULT_WRITE_FAILED;
}

Result CWaveFile::CloseFile() noexcept {
    WriteChanges();
    m_file.reset();
    return RESULT_OK;
}

int64_t CWaveFile::TellData() const {
    int64_t position = 0;
    if (!m_file && !m_stream) return 0;
    return Tell(position) ? position - m_dataOffset : 0;
}

Result CWaveFile::ReadData(uint32_t count, void* buffer, uint32_t* done) {
    *done = 0;
    // Without a "data" chunk the walk left its place anywhere, and a move goes to the start: what stands
    // there is no audio. A stream is asked for nothing all the same, since one that fails has to say so.
    if (m_dataOffset == 0) count = 0;
    if (m_file) {
        // Chunks may follow the audio, so a file is read up to its declared end. The place never lies after
        // that: only reads and SeekData move it.
        const uint32_t left = m_dataSize - static_cast<uint32_t>(TellData());
        return ReadFile(m_file.get(), buffer, std::min(count, left), done, nullptr) ? RESULT_OK
                                                                                    : RESULT_NOT_WAVE;
    }
    if (!m_stream) return RESULT_FAILED;
    const HRESULT read = m_stream->Read(buffer, count, done);
    *done = std::min(*done, count);
    return read == S_OK ? RESULT_OK : RESULT_NOT_WAVE;
}

Result CWaveFile::SeekData(int64_t offset, uint32_t origin) {
    if (!m_file && !m_stream) return RESULT_OK;
    int64_t target = offset;
    if (origin == ORIGIN_CURRENT) {
        int64_t here = 0;
        if (!Tell(here)) return RESULT_NOT_WAVE;
        target = Saturating::Add(offset, here - m_dataOffset);
    } else if (origin == ORIGIN_END) {
        target = Saturating::Add(offset, m_dataSize);
    }
    // Down to a frame before it is held at the end: audio that ends inside a frame can be left at
    // its very end.
    target = std::max<int64_t>(target, 0);
    if (m_format.blockAlign > 1) target -= target % m_format.blockAlign;
    target = std::min<int64_t>(target, m_dataSize);
    return MoveTo(m_dataOffset + target) ? RESULT_OK : RESULT_NOT_WAVE;
}
