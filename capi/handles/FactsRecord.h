// What a source is, as a program is told of it.
#pragma once

#include "capi/input/SourceFacts.h"
#include "capi/vlwav.h"

inline vlw_format RecordOf(const SourceFacts& facts) {
    return {sizeof(vlw_format),
            facts.rate,
            facts.channels,
            facts.bits,
            facts.blockBytes,
            facts.channelMask,
            facts.codecTag,
            facts.frames.value_or(VLW_UNKNOWN),
            facts.promised.value_or(VLW_UNKNOWN),
            facts.container,
            facts.codec};
}
