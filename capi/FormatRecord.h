// How a format reaches a program whose vlw_format may be older or newer than the library's.
#pragma once

#include "AudioCodec/wave/riff/AudioFormatInfo.h"
#include "capi/vlwav.h"

// A format that can be written; the lengths are still unknown.
vlw_format RecordOf(const AudioFormatInfo& info);

// Writes as much of the format as the program's record has room for; its size stays. VLW_BAD_ARGUMENT for
// null and for a record without a size, or smaller than that of version 1.0.
vlw_code PutFormat(const vlw_format& format, vlw_format* receiver) noexcept;
