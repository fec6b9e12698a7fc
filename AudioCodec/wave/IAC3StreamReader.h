// A reader that also takes a WAV image in a caller's stream.
#pragma once

#include "AudioCodec/wave/IAC3Reader.h"

namespace vlacwav3 {

struct IStream;

struct IAC3StreamReader : IAC3Reader {
    // Opens the image that begins at the stream's current place, in place of an earlier source. The stream is
    // borrowed: the caller keeps it alive while it uses the reader. RESULT_OK; RESULT_NOT_WAVE for an image
    // that isn't whole or no WAV, for null, and for a stream that fails; RESULT_NOT_PCM for all but PCM of 8
    // and 16 bits; RESULT_FAILED without memory.
    // Of the stream only PLATFORM_OK is a success, and a Read that brings fewer bytes than asked for is its
    // end. A chunk header that can't be read, and a stream that refuses to move behind its end, end the
    // search for chunks with what was found. After an Open whose source had to be decoded, until the next
    // Open, the image is decoded as well: results are then those of such an Open, RESULT_NO_MEMORY, and
    // RESULT_BAD_ARGUMENT for null.
    virtual Result OpenStream(IStream* stream /*in*/, uint32_t flags /*in: 0 or OPEN_READ_ONLY*/) = 0;

protected:
    ~IAC3StreamReader() = default;
};

inline constexpr GUID IID_IAC3StreamReader = MakeGuid("C0160088-9F05-471A-89A4-1B6B3FD56BC1");

}  // namespace vlacwav3
