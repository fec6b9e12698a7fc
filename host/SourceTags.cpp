#include "host/SourceTags.h"

#include <string_view>

#include "host/Failure.h"
#include "host/Output.h"
#include "host/RiffScan.h"
#include "host/TemporaryCleanup.h"

namespace {

// A chunk with its pad byte.
std::string Chunk(std::string_view id, std::string_view content) {
    uint8_t size[sizeof(uint32_t)];
    StoreLE32(size, static_cast<uint32_t>(content.size()));
    std::string chunk(id);
    chunk.append(size, size + sizeof size).append(content);
    if (content.size() % 2 != 0) chunk += '\0';
    return chunk;
}

std::string SilenceWithList(const std::map<uint32_t, std::string>& info) {
    constexpr std::string_view kMono8At8000("\x01\0\x01\0\x40\x1F\0\0\x40\x1F\0\0\x01\0\x08\0", 16);
    std::string list = "INFO";
    for (const auto& [id, content] : info) {
        char name[sizeof(uint32_t)];
        StoreLE32(reinterpret_cast<uint8_t*>(name), id);
        list += Chunk({name, sizeof name}, content);
    }
    return Chunk("RIFF",
                 "WAVE" + Chunk("fmt ", kMono8At8000) + Chunk("data", "\x80\x80") + Chunk("LIST", list));
}

}  // namespace

std::optional<TagSet> ReadTags(const Module& module, const Source& source, const std::string& path) {
    if (source.Format().direct) return Tags::Read(*source.Metadata());
    const RiffScan scan = ScanRiff(path);
    if (scan.declaredSize == 0) return std::nullopt;
    if (scan.info.empty()) return TagSet();
    Output copy = Output::Scratch();
    try {
        copy.Write(SilenceWithList(scan.info));
    } catch (const OutputFailure&) {  // but not of the output that the user asked for
        TemporaryCleanup::FailWriting();
    }
    return Tags::Read(*Source(module, copy.Temporary()).Metadata());
}
