#include "host/AudioCopy.h"

#include <fmt/format.h>

#include <vector>

#include "host/Report.h"

namespace {

constexpr size_t kBlockFrames = 16384;
// A converter may round its last frames away, never more than its filter is long (in source frames).
constexpr int64_t kFilterFrames = 64;

}  // namespace

int64_t CopyAudio(Source& source, uint32_t channels, const FrameTaker& taker) {
    std::vector<int16_t> block(kBlockFrames * channels);
    int64_t total = 0;
    while (const uint32_t frames = source.Read(block)) {  // fewer than asked for is no end
        taker(block.data(), frames);
        total += frames;
    }
    return total;
}

void WarnIfShort(const std::string& file, const SourceFormat& source, uint32_t rate, int64_t promised,
                 int64_t total) {
    const bool exact = source.direct && rate == source.rate;
    const int64_t rounding = exact ? 0 : 1 + kFilterFrames * rate / source.rate;
    if (total + rounding >= promised) return;
    Report::Complain(file, fmt::format("Warning: the file seems cut off, {} of the promised {} frames came.",
                                       total, promised));
}
