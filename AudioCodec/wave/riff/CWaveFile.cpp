#include "AudioCodec/wave/riff/CWaveFile.h"

#include <algorithm>
#include <vector>

#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/converter/Saturating.h"
#include "AudioCodec/wave/riff/CTagSave.h"
#include "platform/base/LastError.h"
#include "platform/com/Stream.h"
#include "platform/file/File.h"
#include "riff/WaveTypes.h"

namespace {

// What may be asked of a stream without looking first whether it holds as much.
constexpr uint64_t kUncheckedStreamBytes = 65536;

// What the sizes in the headers can tell.
constexpr uint64_t kLargestFile = 0xFFFFFFFF;

// A stream that claims to stand behind it is no stream to compute with.
constexpr uint64_t kLargestPosition = uint64_t{1} << 62;

// Both the file calls and the stream number their origins so.
constexpr uint32_t kFromStart = 0;
constexpr uint32_t kFromHere = 1;
constexpr uint32_t kFromEnd = 2;

int64_t JoinPosition(DWORD low, LONG high) {
    return static_cast<int64_t>(uint64_t{static_cast<DWORD>(high)} << 32 | low);
}

Result OpenFailure() {
    return GetLastError() == ERROR_SHARING_VIOLATION ? RESULT_FILE_IN_USE : RESULT_CANNOT_OPEN;
}

}  // namespace

struct CWaveFile::ChunkRule {
    uint32_t id;
    uint32_t leastSize;  // a smaller chunk is passed over like an unknown one
    bool (CWaveFile::*parse)(const ChunkHeader& chunk);
};

CWaveFile::~CWaveFile() { CloseFile(); }

Result CWaveFile::OpenForReading(const char16_t* path, bool readOnly) {
    CloseFile();
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
    m_dataSize = 0;
    m_dataOffset = 0;
    m_chunks.clear();
    if (m_file && !MoveTo(0)) return false;

    uint8_t word[4] = {};
    if (!ReadExact(word, sizeof word) || LoadLE32(word) != ChunkId::kRiff) return false;
    ReadExact(word, sizeof word);  // the RIFF size is often wrong; neither it nor its absence matters
    if (!ReadExact(word, sizeof word) || LoadLE32(word) != ChunkId::kWave) return false;

    ChunkHeader chunk{};
    while (ReadChunkHeader(chunk)) {
        if (!ParseChunk(chunk)) return false;
    }
    if (m_dataOffset != 0 && !MoveTo(m_dataOffset)) return false;
    return m_formatFound;
}

bool CWaveFile::ReadChunkHeader(ChunkHeader& header) const {
    uint8_t bytes[kChunkHeaderSize];
    if (!ReadExact(bytes, sizeof bytes)) return false;
    header = {LoadLE32(bytes), LoadLE32(bytes + 4)};
    return true;
}

bool CWaveFile::ParseChunk(const ChunkHeader& chunk) {
    static constexpr ChunkRule kRules[] = {
        {ChunkId::kFmt, kPcmFormatSize, &CWaveFile::ParseFormat},
        {ChunkId::kList, kListTypeSize, &CWaveFile::ParseList},
        {ChunkId::kData, 0, &CWaveFile::ParseData},
        {ChunkId::kFact, kFactSampleCountSize, &CWaveFile::ParseFact},
    };
    for (const ChunkRule& rule : kRules) {
        if (chunk.id == rule.id && chunk.size >= rule.leastSize) return (this->*rule.parse)(chunk);
    }
    return SkipRest(chunk, 0);
}

bool CWaveFile::ParseFormat(const ChunkHeader& chunk) {
    if (!SourceHolds(chunk.size)) return false;
    const uint32_t kept = std::min(chunk.size, kFormatFixedSize + kFormatExtraMost);
    std::vector<uint8_t> record(kept);
    if (!ReadExact(record.data(), kept)) return false;
    m_format = WaveFormat::Load(record.data(), kept);
    if (m_file)
        m_format.blockAlign = static_cast<uint16_t>(uint32_t{m_format.bitsPerSample} * m_format.channels / 8);
    m_formatFound = true;
    return SkipRest(chunk, kept);
}

bool CWaveFile::ParseList(const ChunkHeader& chunk) {
    uint8_t type[kListTypeSize];
    if (!ReadExact(type, sizeof type)) return false;
    if (LoadLE32(type) != ChunkId::kInfo) return SkipRest(chunk, kListTypeSize);

    m_chunks.clear();  // of several lists the last one wins whole
    uint32_t left = chunk.size - kListTypeSize;
    while (left > kChunkHeaderSize) {
        if (!ParseInfoEntry(left)) return false;
    }
    return SkipRest(chunk, chunk.size - left);
}

bool CWaveFile::ParseInfoEntry(uint32_t& left) {
    ChunkHeader entry{};
    if (!ReadChunkHeader(entry)) return false;
    left -= kChunkHeaderSize;

    uint64_t stored =
        uint64_t{entry.size} + (entry.size & 1);  // 64 bits: 0xFFFFFFFF and its pad byte are not 0
    if (entry.size == left) stored = left;        // some writers leave the last pad byte out of the list
    if (!SourceHolds(stored)) return false;
    const auto held = static_cast<uint32_t>(std::min<uint64_t>(stored, left));
    std::string value(held, '\0');
    if (!ReadExact(value.data(), held)) return false;
    value.resize(std::min(held, entry.size));
    m_chunks.try_emplace(entry.id, std::move(value));
    left -= held;
    return true;
}

bool CWaveFile::ParseData(const ChunkHeader& chunk) {
    int64_t position = 0;
    if (!Tell(position)) return false;
    m_dataOffset = static_cast<uint32_t>(position);
    m_dataSize = chunk.size;
    return SkipRest(chunk, 0);
}

bool CWaveFile::ParseFact(const ChunkHeader& chunk) {
    uint8_t sampleCount[kFactSampleCountSize];  // what the data chunk says is believed instead
    return ReadExact(sampleCount, sizeof sampleCount) && SkipRest(chunk, sizeof sampleCount);
}

bool CWaveFile::SkipRest(const ChunkHeader& chunk, uint32_t consumed) const {
    const int64_t rest = int64_t{chunk.size} - consumed + (chunk.size & 1);
    return rest == 0 || Move(rest, kFromHere);
}

bool CWaveFile::ReadExact(void* buffer, uint32_t count) const {
    uint32_t done = 0;
    if (m_file) return ReadFile(m_file.get(), buffer, count, &done, nullptr) && done == count;
    return m_stream && m_stream->Read(buffer, count, &done) == S_OK && done == count;
}

bool CWaveFile::Move(int64_t distance, uint32_t origin, int64_t* position) const {
    int64_t reached = 0;
    if (m_file) {
        auto high = static_cast<LONG>(distance >> 32);
        SetLastError(ERROR_SUCCESS);
        const DWORD low = SetFilePointer(m_file.get(), static_cast<LONG>(distance), &high, origin);
        if (GetLastError() != ERROR_SUCCESS) return false;
        reached = JoinPosition(low, high);
    } else if (m_stream) {
        LARGE_INTEGER move{};
        move.QuadPart = distance;
        ULARGE_INTEGER place{};
        if (m_stream->Seek(move, origin, &place) != S_OK) return false;
        if (place.QuadPart > kLargestPosition) return false;
        reached = static_cast<int64_t>(place.QuadPart);
    }
    if (position) *position = reached;
    return true;
}

bool CWaveFile::MoveTo(int64_t position) const { return Move(position, kFromStart); }

bool CWaveFile::Tell(int64_t& position) const {
    if (!m_file) return Move(0, kFromHere, &position);
    LONG high = 0;  // a query can't fail on an open file; asked in front of every read, it does without the
                    // last error
    const DWORD low = SetFilePointer(m_file.get(), 0, &high, FILE_CURRENT);
    position = JoinPosition(low, high);
    return true;
}

// Whether that many bytes stand behind the current place. A stream tells its size to no call that all streams
// have, so its last byte in question is touched.
bool CWaveFile::SourceHolds(uint64_t count) const {
    int64_t here = 0;
    if (m_file) {
        DWORD high = 0;
        const uint64_t low = GetFileSize(m_file.get(), &high);
        const uint64_t size = uint64_t{high} << 32 | low;
        return Tell(here) && static_cast<uint64_t>(here) <= size &&
               count <= size - static_cast<uint64_t>(here);
    }
    if (count <= kUncheckedStreamBytes) return true;
    uint8_t last = 0;
    return Tell(here) && MoveTo(here + static_cast<int64_t>(count) - 1) && ReadExact(&last, 1) &&
           MoveTo(here);
}

void CWaveFile::BeginAudio(const WaveFormat& format) {
    m_format = format;
    m_dataSize = 0;
    m_chunks.clear();
    WriteHeader(false);
    m_formatFound = true;
    m_writable = true;
}

Result CWaveFile::WriteData(const void* bytes, uint32_t count) {
    if (!m_writable) return RESULT_FAILED;
    const uint64_t end = static_cast<uint64_t>(TellData()) + count;
    if (m_dataOffset + end > kLargestFile) return RESULT_WRITE_FAILED;
    DWORD done = 0;
    if (!WriteFile(m_file.get(), bytes, count, &done, nullptr) || done != count) {
        const DWORD size = m_file ? GetFileSize(m_file.get(), nullptr) : 0;
        if (m_file) m_dataSize = size - std::min(size, m_dataOffset);  // a full disk may lack even the header
        return RESULT_WRITE_FAILED;
    }
    // As the file's size would tell: a write in the middle, behind a seek, adds nothing.
    m_dataSize = std::max(m_dataSize, static_cast<uint32_t>(end));
    m_modified = true;
    return RESULT_OK;
}

void CWaveFile::Write(const void* bytes, size_t count) const {
    DWORD done = 0;
    WriteFile(m_file.get(), bytes, static_cast<DWORD>(count), &done, nullptr);
}

void CWaveFile::WriteHeader(bool final) noexcept {
    const uint32_t formatSize = m_format.DiskSize();
    const auto listSize = static_cast<uint32_t>(InfoEntriesSize(m_chunks));
    m_dataOffset = formatSize + 28;

    uint64_t end = uint64_t{m_dataOffset} + m_dataSize;
    if (listSize != 0) end += kChunkHeaderSize + kListTypeSize + listSize;
    end += end & 1;
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
        if (listSize != 0) PutInfoList(m_chunks, [this](const void* bytes, size_t n) { Write(bytes, n); });
        SetEndOfFile(m_file.get());
    }
    MoveTo(m_dataOffset);
}

void CWaveFile::SaveTags() const noexcept {
    AtBorder(RESULT_FAILED, [this] {
        CTagSave(m_file.get(), m_format).Run(m_chunks);
        return RESULT_OK;
    });
}

Result CWaveFile::CloseFile() noexcept {
    if (!m_file) return RESULT_OK;
    if (!m_readOnly && m_modified) {
        if (m_writable) {
            WriteHeader(true);
        } else {
            SaveTags();
        }
    }
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
    if (m_file) {
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
    if (origin == kFromHere) {
        int64_t here = 0;
        if (!Tell(here)) return RESULT_NOT_WAVE;
        target = Saturating::Add(offset, here - m_dataOffset);
    } else if (origin == kFromEnd) {
        target = Saturating::Add(offset, m_dataSize);
    }
    target = std::max<int64_t>(target, 0);
    if (m_format.blockAlign > 1) target -= target % m_format.blockAlign;
    target = std::min<int64_t>(target, m_dataSize);
    return MoveTo(m_dataOffset + target) ? RESULT_OK : RESULT_NOT_WAVE;
}
