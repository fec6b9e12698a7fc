#include "host/SourceTags.h"

#include <string_view>

#include "host/Failure.h"
#include "host/Output.h"
#include "host/RiffScan.h"
#include "host/TemporaryCleanup.h"
#include "riff/InfoList.h"

namespace {

// One frame of 8-bit silence, mono at 8000 Hz, as the chunks "fmt " and "data".
constexpr std::string_view kSilence(
    "fmt \x10\0\0\0\x01\0\x01\0\x40\x1F\0\0\x40\x1F\0\0\x01\0\x08\0"
    "data\x02\0\0\0\x80\x80",
    34);

std::string SilenceWithList(const InfoChunks& info) {
    std::string file("RIFF\0\0\0\0WAVE", kFileHeaderSize);
    file += kSilence;
    PutInfoList(
        info, [&](const void* bytes, size_t count) { file.append(static_cast<const char*>(bytes), count); });
    StoreLE32(reinterpret_cast<uint8_t*>(file.data()) + 4,
              static_cast<uint32_t>(file.size()) - kChunkHeaderSize);
    return file;
}

}  // namespace

std::optional<TagSet> ReadTags(const Module& module, const Source& source, const std::string& path) {
    if (source.Format().direct) return Tags::Read(*source.Metadata());
    InfoChunks info;
    if (!ReadInfoOf(path, info)) return std::nullopt;
    if (info.empty()) return TagSet();
    Output copy = Output::Scratch();
    try {
        copy.Write(SilenceWithList(info));
    } catch (const OutputFailure&) {  // but not of the output that the user asked for
        TemporaryCleanup::FailWriting();
    }
    return Tags::Read(*Source(module, copy.Temporary()).Metadata());
}
