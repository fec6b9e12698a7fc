#include "capi/input/SourceFacts.h"

int64_t UnitSize::FramesIn(uint64_t stored) const {
    if (bytes == 0) return 0;
    uint64_t count = stored / bytes * frames;
    const uint64_t rest = stored % bytes;
    if (stepBytes != 0 && rest >= headBytes + (headFrames == 0 ? stepBytes : 0))
        count += headFrames + (rest - headBytes) / stepBytes * stepFrames;
    return static_cast<int64_t>(count);
}
