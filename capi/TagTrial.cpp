#include "capi/TagTrial.h"

#include <algorithm>

#include "capi/Keywords.h"
#include "capi/SystemFailure.h"
#include "capi/WaveObjects.h"
#include "riff/WaveFormat.h"
#include "riff/WaveTypes.h"

namespace {

constexpr const char* kName = "a trial of the tags";  // which has no path
constexpr AudioShape kShape = {8000, 1};              // any that is written without a conversion
constexpr uint64_t kBareFile = 44;                    // bytes of a file without audio and tags

void Require(int error, const char* doing) {
    if (error != 0) throw SystemFailure(error, doing + (' ' + std::string(kName)), {});
}

std::string Quoted(const std::string& text) { return text.empty() ? "nothing" : '"' + text + '"'; }

void AddClause(std::string& clauses, const std::string& clause) {
    if (!clauses.empty()) clauses += "; ";
    clauses += clause;
}

std::string Compare(const Tags& wanted, const Tags& kept) {
    std::string clauses;
    for (size_t index = 0; const TagRow* const row = Keywords::At(index); ++index) {
        const std::string& before = wanted.TextOf(*row);
        const std::string& after = kept.TextOf(*row);
        if (before != after)
            AddClause(clauses, std::string(row->keyword) + " would become " + Quoted(after) + " instead of " +
                                   Quoted(before));
    }
    for (const auto& [number, bytes] : wanted.AllPictures())
        AddClause(clauses, "picture " + std::to_string(number) + " would go");
    return clauses;
}

uint32_t IndexOfShape(const Module& module) {
    const std::vector<AudioFormatInfo>& formats = module.Formats();
    for (uint32_t index = 0; index < formats.size(); ++index)
        if (formats[index].samplesPerSec == kShape.rate && formats[index].channels == kShape.channels)
            return index;
    return 0;
}

// A file without audio, of a format that every editor takes, with a list of these chunks.
std::string ImageWith(std::string_view infoChunks) {
    const WaveFormat format = WaveFormat::Pcm(kShape.channels, kShape.rate, 16);
    const auto listBytes = static_cast<uint32_t>(kListTypeSize + infoChunks.size());
    const bool listed = !infoChunks.empty();
    std::vector<uint8_t> head(kBareFile + (listed ? kChunkHeaderSize + kListTypeSize : 0));
    StoreLE32(&head[0], ChunkId::kRiff);
    StoreLE32(&head[4], static_cast<uint32_t>(head.size() + infoChunks.size() - kChunkHeaderSize));
    StoreLE32(&head[8], ChunkId::kWave);
    StoreLE32(&head[12], ChunkId::kFmt);
    StoreLE32(&head[16], kPcmFormatSize);
    uint8_t record[kFormatFixedSize];
    format.StoreFixed(record);
    std::copy(record, record + kPcmFormatSize, &head[20]);
    StoreLE32(&head[36], ChunkId::kData);
    if (listed) {
        StoreLE32(&head[kBareFile], ChunkId::kList);
        StoreLE32(&head[kBareFile + 4], listBytes);
        StoreLE32(&head[kBareFile + kChunkHeaderSize], ChunkId::kInfo);
    }
    return std::string(head.begin(), head.end()).append(infoChunks);
}

}  // namespace

TagTrial::TagTrial(const Module& module, const Tags& tags, vlw_text text,
                   const std::string& temporaryFolder) {
    if (!tags.AllTexts().empty()) {
        OutputFile file;
        Require(file.MakeInMemory(temporaryFolder), "Making");
        const RefPtr<IAC3Writer> writer =
            OpenWriter(module, kShape, IndexOfShape(module), text, file.Path(), {kName, {}});
        GiveTags(*writer, tags);
        RequireOf(writer->Close(), "Writing", {kName, {}});
        ReadBack(module, text, file);
    }
    m_losses = Compare(tags, m_kept);
}

TagTrial::TagTrial(const Module& module, const Tags& tags, vlw_text text, std::string_view infoChunks,
                   const std::string& temporaryFolder) {
    OutputFile file;
    Require(file.MakeInMemory(temporaryFolder), "Making");
    const std::string image = ImageWith(infoChunks);
    Require(file.Bytes().Write(image.data(), image.size()), "Writing");
    EditTags(module, tags, text, file.Path(), {kName, {}});
    ReadBack(module, text, file);
    m_losses = Compare(tags, m_kept);
}

void TagTrial::ReadBack(const Module& module, vlw_text text, const OutputFile& file) {
    m_kept = TagsOf(*OpenReader(module, text, file.Path(), {kName, {}}));
    uint64_t size = 0;
    Require(file.Bytes().Size(size), "Reading");
    m_bytes = size - std::min(size, kBareFile);
}
