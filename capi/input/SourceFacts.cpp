#include "capi/input/SourceFacts.h"

namespace {

// What the media graph takes.
constexpr uint32_t kDecodedChannelsMost = 64;
constexpr uint32_t kDecodedRateMost = 10'000'000;

}  // namespace

bool SourceFacts::IsSure() const {
    if (directBits != 0) return frames.has_value();
    return frames.value_or(0) > 0 && unit.bytes != 0 && channels <= kDecodedChannelsMost &&
           rate <= kDecodedRateMost;
}

int64_t UnitSize::FramesIn(uint64_t stored) const {
    if (bytes == 0) return 0;
    uint64_t count = stored / bytes * frames;
    const uint64_t rest = stored % bytes;
    if (stepBytes != 0 && rest >= headBytes + (headFrames == 0 ? stepBytes : 0))
        count += headFrames + (rest - headBytes) / stepBytes * stepFrames;
    return static_cast<int64_t>(count);
}
