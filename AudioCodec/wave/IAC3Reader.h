// A reader as a host sees it: any source as signed 16-bit little-endian interleaved PCM at the host's rate
// and channel count. Counts and positions are in output frames. One thread at a time calls a reader. The
// order of the operations is the binary border: nothing moves, nothing is added.
//
// PCM of 8 and 16 bits is read directly. All else is decoded, and then positions and lengths are whole
// seconds, and some operations aren't supported, as each one says.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"
#include "AudioCodec/wave/riff/AudioFormatInfo.h"
#include "AudioCodec/wave/riff/Origin.h"

namespace vlacwav3 {

struct IAC3Metadata;

// Flag of Open and OpenStream: open the file for reading alone. Without it the file must be writable too.
inline constexpr uint32_t OPEN_READ_ONLY = 0x100;

struct IAC3Reader : IAttributeContainer64 {
    // Opens a file in place of an earlier one. RESULT_OK; RESULT_CANNOT_OPEN, also for null;
    // RESULT_NOT_WAVE for a file that isn't whole or no WAV; RESULT_FILE_IN_USE. Where the audio has to be
    // decoded also RESULT_SOURCE_NOT_LOADED, RESULT_FILTER_MISSING, or a failure of the platform where it has
    // no decoders.
    virtual Result Open(const char16_t* path /*in*/, uint32_t flags /*in: 0 or OPEN_READ_ONLY*/) = 0;
    // Moves to a frame; positions are held between the start and, without conversion, the end. RESULT_OK;
    // RESULT_BAD_ARGUMENT for another origin, nothing moved; RESULT_NOT_WAVE where the source can't move
    // there; RESULT_FAILED where a decoder can't. With ORIGIN_CURRENT and 0 it tells the position, and with
    // conversion drops what was read ahead: count the frames instead.
    virtual Result Seek(uint32_t origin /*in: ORIGIN_...*/, int64_t offset /*in: frames*/,
                        int64_t* position /*out: frames, may be null*/) = 0;
    // Reads up to `frames`; fewer is no end: read until RESULT_OK comes with 0. Otherwise:
    // RESULT_BAD_ARGUMENT for null, RESULT_FAILED without an open source, RESULT_NOT_PCM for a format that
    // isn't read, RESULT_NOT_WAVE where reading fails, RESULT_CANNOT_RUN where the decoder doesn't start.
    virtual Result Read(void* buffer /*out: frames × channels × 2 bytes*/, uint32_t frames /*in*/,
                        uint32_t* framesRead /*out*/,
                        uint8_t* endOfStream /*out: 1 if the last source block was short, may be null*/) = 0;
    // What the file's header promises, at the output's rate. RESULT_OK; RESULT_BAD_ARGUMENT for null,
    // RESULT_FAILED before an Open that succeeded, RESULT_NOT_WAVE for a format without a frame size.
    virtual Result GetLength(int64_t* frames /*out*/) = 0;
    // Closes the source; its format and tags can still be asked for. Always RESULT_OK.
    virtual Result Close() = 0;
    // At any time, also before Open; until then it is 2 channels at 44100 Hz. Where the source is decoded,
    // only what is said after the Open counts. The position stays where it is in time. RESULT_OK; otherwise
    // the format that stood stands: RESULT_BAD_ARGUMENT for another bytesPerSample, RESULT_NO_MEMORY.
    virtual Result SetOutputFormat(uint32_t channels /*in*/, uint32_t rate /*in: Hz*/,
                                   uint32_t bytesPerSample /*in: 2*/) = 0;
    // RESULT_OK, RESULT_BAD_ARGUMENT for null.
    virtual Result GetOutputFormat(uint32_t* channels /*out*/, uint32_t* rate /*out: Hz*/,
                                   uint32_t* bytesPerSample /*out: 2*/) = 0;
    // The tags of the file. RESULT_OK; otherwise *metadata is null: RESULT_BAD_ARGUMENT for a null receiver,
    // RESULT_NO_MEMORY, RESULT_NOT_SUPPORTED where the source is decoded.
    virtual Result GetMetadata(IAC3Metadata** metadata /*out: one reference, a new object each time*/) = 0;
    // The source's own format. RESULT_OK; RESULT_BAD_ARGUMENT for null, RESULT_NOT_SUPPORTED where the source
    // is decoded.
    virtual Result GetSourceFormat(AudioFormatInfo* format /*out*/) = 0;
    // How many file name extensions there are to ask for. Always RESULT_OK.
    virtual Result GetExtensionCount(uint32_t* count /*out, may be null*/) = 0;
    // RESULT_OK; RESULT_BAD_EXTENSION for null, and for an index that isn't below the count, with an empty
    // text; RESULT_NO_MEMORY.
    virtual Result GetExtension(uint32_t index /*in*/,
                                char16_t** extension /*out: owned by the caller, no dot*/) = 0;

protected:
    ~IAC3Reader() = default;
};

inline constexpr GUID IID_IAC3Reader = MakeGuid("2B7C90D3-C735-4619-8F8D-FA1F308F2410");

}  // namespace vlacwav3
