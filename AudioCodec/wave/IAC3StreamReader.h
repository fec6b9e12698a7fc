// A reader that also takes a WAV image in a caller's stream.
#pragma once

#include "AudioCodec/wave/IAC3Reader.h"

struct IStream;

struct IAC3StreamReader : IAC3Reader {
    // The stream is borrowed: the caller keeps it alive while it uses the reader. The image begins at the
    // stream's current place.
    virtual Result OpenStream(IStream* stream /*in*/, uint32_t flags /*in*/) = 0;

protected:
    ~IAC3StreamReader() = default;
};

inline constexpr GUID IID_IAC3StreamReader = MakeGuid("C0160088-9F05-471A-89A4-1B6B3FD56BC1");
