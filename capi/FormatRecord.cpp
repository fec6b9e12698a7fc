#include "capi/FormatRecord.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "riff/WaveTypes.h"

namespace {
constexpr size_t kFirstSize = offsetof(vlw_format, codec) + sizeof(const char*);  // in version 1.0
}

vlw_format RecordOf(const AudioFormatInfo& info) {
    return {sizeof(vlw_format),
            info.samplesPerSec,
            info.channels,
            info.bitsPerSample,
            info.blockAlign,
            0,
            kFormatTagPcm,
            VLW_UNKNOWN,
            VLW_UNKNOWN,
            "WAV",
            "PCM"};
}

vlw_code PutFormat(const vlw_format& format, vlw_format* receiver) noexcept {
    if (!receiver || receiver->size < kFirstSize) return VLW_BAD_ARGUMENT;
    vlw_format whole = format;
    whole.size = receiver->size;
    std::memcpy(receiver, &whole, std::min(receiver->size, sizeof whole));
    return VLW_OK;
}
