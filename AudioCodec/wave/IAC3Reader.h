// A reader as a host sees it: any source as signed 16-bit little-endian interleaved PCM at the host's rate
// and channel count. Counts and positions are in output frames. One thread at a time calls a reader. The
// order of the operations is the binary border: nothing moves, nothing is added.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"
#include "AudioCodec/wave/riff/AudioFormatInfo.h"

struct IAC3Metadata;

// Flag of Open and OpenStream: open the file for reading alone. Without it the file must be writable too.
inline constexpr uint32_t OPEN_READ_ONLY = 0x100;

struct IAC3Reader : IAttributeContainer64 {
    virtual Result Open(const char16_t* path /*in*/, uint32_t flags /*in*/) = 0;
    virtual Result Seek(uint32_t origin /*in: 0 start, 1 current, 2 end*/, int64_t offset /*in: frames*/,
                        int64_t* position /*out: frames, may be null*/) = 0;
    // Reads up to `frames`; fewer is no end: read until 0 come back.
    virtual Result Read(void* buffer /*out*/, uint32_t frames /*in*/, uint32_t* framesRead /*out*/,
                        uint8_t* endOfStream /*out: the last source block was short, may be null*/) = 0;
    virtual Result GetLength(int64_t* frames /*out*/) = 0;
    virtual Result Close() = 0;
    // At any time, also before Open; bytesPerSample is 2.
    virtual Result SetOutputFormat(uint32_t channels, uint32_t rate /*in: Hz*/, uint32_t bytesPerSample) = 0;
    virtual Result GetOutputFormat(uint32_t* channels, uint32_t* rate, uint32_t* bytesPerSample) = 0;
    virtual Result GetMetadata(IAC3Metadata** metadata /*out: one reference*/) = 0;
    // 5 where the source was decoded and has no format of its own to tell.
    virtual Result GetSourceFormat(AudioFormatInfo* format /*out*/) = 0;
    virtual Result GetExtensionCount(uint32_t* count /*out, may be null*/) = 0;
    virtual Result GetExtension(uint32_t index,
                                char16_t** extension /*out: owned by the caller, no dot*/) = 0;

protected:
    ~IAC3Reader() = default;
};

inline constexpr GUID IID_IAC3Reader = MakeGuid("2B7C90D3-C735-4619-8F8D-FA1F308F2410");
