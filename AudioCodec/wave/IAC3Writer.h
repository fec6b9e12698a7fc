// A writer as a host sees it: the host's signed 16-bit little-endian interleaved frames go into a PCM WAV
// file in one of the stock formats, converted on the way where rate or channels differ. Counts and positions
// are in frames of the host's format. SetFormat and SelectFormat, then Open, any number of Write and Seek,
// then Close, which completes the file. One thread at a time calls a writer. The order of the operations is
// the binary border: nothing moves, nothing is added.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"
#include "AudioCodec/wave/riff/AudioFormatInfo.h"

struct IAC3Metadata;

// Flag of Open: a file that is there already may be overwritten.
inline constexpr uint32_t OPEN_OVERWRITE = 1;

struct IAC3Writer : IAttributeContainer64 {
    // Makes the file, an empty WAV at first. 0 or 1.
    virtual Result Open(const char16_t* path /*in*/, uint32_t flags /*in*/) = 0;
    // 0, 4, 12 before SelectFormat, 1003.
    virtual Result Seek(uint32_t origin /*in: 0 start, 1 current, 2 end*/, int64_t offset /*in: frames*/,
                        int64_t* position /*out: frames*/) = 0;
    // 0, 1, 4, 12 before SelectFormat, 1004.
    virtual Result Write(const void* buffer /*in*/, uint32_t frames /*in*/,
                         uint32_t* framesAccepted /*out*/) = 0;
    virtual Result GetLength(uint64_t* frames /*out: accepted since the writer was made*/) = 0;
    // Ends the file and takes back the selected format; the next file needs a SelectFormat of its own.
    virtual Result Close() = 0;
    // What Write will be given. Channels and rate are cut to 16 bits; samples are 16 bits wide, whatever
    // bytesPerSample says.
    virtual Result SetFormat(uint32_t channels, uint32_t rate /*in: Hz*/, uint32_t bytesPerSample) = 0;
    virtual Result GetFormat(uint32_t* channels, uint32_t* rate, uint32_t* bytesPerSample) = 0;
    // Kept as a copy and written by Close.
    virtual Result SetMetadata(IAC3Metadata* metadata /*in*/) = 0;
    virtual Result GetMetadata(IAC3Metadata** metadata /*out: one reference, a copy*/) = 0;
    virtual Result SelectFormat(uint32_t index /*in: below GetFormatCount*/) = 0;
    virtual Result GetSelectedFormat(uint32_t* index /*out*/, AudioFormatInfo* format /*out*/,
                                     char16_t** text /*out: as GetFormatInfo*/) = 0;
    virtual Result GetFormatCount(uint32_t* count /*out, may be null*/) = 0;
    // The text is in the language of ATTR_TEXT_LANGUAGE on this object, a platform language id, else English.
    virtual Result GetFormatInfo(uint32_t index /*in*/, AudioFormatInfo* format /*out*/,
                                 char16_t** text /*out: owned by the caller, may be null*/) = 0;

protected:
    ~IAC3Writer() = default;
};

inline constexpr GUID IID_IAC3Writer = MakeGuid("EF1B9CF6-D57F-4623-AC59-B72AE3810CDE");
