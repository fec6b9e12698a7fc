#include "capi/handles/SourceTags.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "capi/ModuleFailure.h"
#include "capi/TagTransfer.h"
#include "capi/TextEncoding.h"
#include "capi/audio/ReadOnlyStream.h"
#include "platform/base/CodePage1252.h"
#include "platform/base/Utf.h"
#include "riff/WaveTypes.h"

namespace {

constexpr uint64_t kEntriesMost = uint64_t{64} << 20;

// One frame of 8-bit silence, mono at 8000 Hz, as a file up to its list.
constexpr std::string_view kSilence(
    "RIFF\0\0\0\0WAVE"
    "fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x40\x1F\0\0\x01\0\x08\0"
    "data\x02\0\0\0\x80\x80"
    "LIST\0\0\0\0INFO",
    58);
constexpr size_t kListSizePlace = kSilence.size() - 8;

class BytesStream final : public ReadOnlyStream {
public:
    explicit BytesStream(std::vector<uint8_t> bytes) : m_bytes(std::move(bytes)) {}

    int32_t Read(void* buffer, uint32_t size, uint32_t* done) override {
        const uint64_t left = m_bytes.size() - std::min<uint64_t>(m_bytes.size(), m_place);
        *done = static_cast<uint32_t>(std::min<uint64_t>(size, left));
        if (*done != 0) std::memcpy(buffer, &m_bytes[m_place], *done);
        m_place += *done;
        return PLATFORM_OK;
    }

private:
    uint64_t SizeOfStream() const override { return m_bytes.size(); }

    const std::vector<uint8_t> m_bytes;
};

// Of a list that the file's end cuts off, the entries before the end.
void DropTornEntry(std::vector<uint8_t>& entries) {
    size_t whole = 0;
    while (entries.size() - whole >= kChunkHeaderSize) {
        const uint64_t size = LoadLE32(&entries[whole + 4]);
        const uint64_t next = whole + kChunkHeaderSize + size + (size & 1);
        if (next > entries.size()) break;
        whole = static_cast<size_t>(next);
    }
    entries.resize(whole);
}

// Text of no told encoding: UTF-8 where it is that.
std::string Decoded(const std::string& bytes) {
    if (bytes.empty() || IsUtf8(bytes)) return bytes;
    std::u16string units(bytes.size(), u'\0');
    const auto count = static_cast<int>(bytes.size());
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), count, units.data(), count);
    return Utf::ToUtf8(units);
}

// The tags that the module finds in the entries of a list.
Tags ReadListTags(const ModuleReaders& readers, const std::vector<uint8_t>& entries, vlw_text text) {
    BytesStream stream(FileOfList(entries));
    const RefPtr<IAC3StreamReader> reader = readers.NewReader();
    SetEncoding(*reader, text);
    RequireModule(reader->OpenStream(&stream, OPEN_READ_ONLY), "Reading the tags of", {});
    RefPtr<IAC3Metadata> metadata;
    const Result result = reader->GetMetadata(metadata.Put());
    reader->Close();
    RequireModule(result, "Reading the tags of", {});
    return ReadTags(*metadata);
}

}  // namespace

std::vector<uint8_t> ReadListEntries(Input& input, const SourceFacts& facts) {
    if (!facts.infoList) return {};
    if (!input.IsSeekable()) return facts.infoEntries;
    if (facts.infoList->size > kEntriesMost)
        throw Failure(VLW_DAMAGED, "The tags take more than 64 MiB, which isn't read.", input.Name());
    std::vector<uint8_t> entries(facts.infoList->size);
    const size_t got = input.ReadWholeAt(facts.infoList->place, entries.data(), entries.size());
    if (got < entries.size()) {
        entries.resize(got);
        DropTornEntry(entries);
    }
    return entries;
}

std::vector<uint8_t> FileOfList(const std::vector<uint8_t>& entries) {
    std::vector<uint8_t> file(kSilence.size() + entries.size());
    std::copy(kSilence.begin(), kSilence.end(), file.begin());
    std::copy(entries.begin(), entries.end(), file.begin() + kSilence.size());
    StoreLE32(&file[kListSizePlace], static_cast<uint32_t>(entries.size() + kListTypeSize));
    StoreLE32(&file[4], static_cast<uint32_t>(file.size() - kChunkHeaderSize));
    return file;
}

Tags ReadSourceTags(const ModuleReaders& readers, Input& input, const SourceFacts& facts, vlw_text text) {
    Tags tags;
    const std::vector<uint8_t> entries = ReadListEntries(input, facts);
    if (!entries.empty()) tags = ReadListTags(readers, entries, text);
    for (const auto& [keyword, bytes] : facts.texts)
        if (!tags.Find(keyword.c_str())) tags.Set(keyword.c_str(), Decoded(bytes).c_str());
    return tags;
}
