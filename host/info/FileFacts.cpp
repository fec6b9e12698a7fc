#include "host/info/FileFacts.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr size_t kPeakBlock = 16384;
constexpr double kFull = 32768;

// Only reading tells the length of some codecs.
void ReadThrough(vlw::Reader& reader, FileFacts& facts, bool peaks) {
    std::vector<int> highest(peaks ? facts.format.channels : 0);
    auto blocks = reader.blocks(kPeakBlock);
    for (const auto& block : blocks) {
        if (!peaks) continue;
        const int16_t* sample = block.data();
        for (size_t frame = 0; frame < block.frames(); ++frame)
            for (int& peak : highest) peak = std::max(peak, std::abs(int{*sample++}));
    }
    facts.frames = reader.tell();
    facts.cut = blocks.ending() == vlw::Ending::cut;
    if (!peaks) return;
    facts.peaks.emplace();
    for (const int peak : highest) facts.peaks->push_back(peak / kFull);
}

std::vector<vlw_chunk> ChunksOf(vlw::Reader& reader) {
    std::vector<vlw_chunk> chunks;
    for (size_t index = 0;; ++index) {
        auto chunk = vlw::detail::sized<vlw_chunk>();
        const vlw_code code = vlw_reader_chunk(reader.get(), index, &chunk);
        if (code == VLW_END) return chunks;
        if (code != VLW_OK) throw vlw::Error(vlw::detail::failure(code, vlw_reader_error(reader.get())));
        chunks.push_back(chunk);
    }
}

}  // namespace

FileFacts FileFacts::Of(vlw::Reader& reader, bool chunks, bool peaks) {
    FileFacts facts;
    facts.format = reader.format();
    facts.lengthTold = vlw_reader_length_told(reader.get()) != 0;
    facts.frames = facts.format.frames.value_or(0);
    facts.cut = facts.frames < facts.format.frames_promised.value_or(0);
    constexpr uint32_t kPcm = 1;
    facts.direct = facts.format.codec_tag == kPcm && (facts.format.bits == 8 || facts.format.bits == 16);
    facts.tags = reader.tags();
    if (chunks) facts.chunks = ChunksOf(reader);
    if (peaks || !facts.format.frames) ReadThrough(reader, facts, peaks);
    return facts;
}
