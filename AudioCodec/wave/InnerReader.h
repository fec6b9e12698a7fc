// The way from the stream reader to what it can't read by itself: compressed WAV, PCM of other
// sample sizes, AIFF.
#pragma once

#include <memory>

#include "AudioCodec/shell/templates/BaseImpl.h"
#include "AudioCodec/wave/IAC3StreamReader.h"

using InnerReader = CBaseImpl<IAC3StreamReader>;

// A reader that decodes through a media graph, owned directly and not by its count. Throws std::bad_alloc.
std::unique_ptr<InnerReader> CreateInnerReader();
