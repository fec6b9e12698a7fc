// A writer as a host sees it: the host's signed 16-bit little-endian interleaved frames go into a PCM WAV
// file in one of the stock formats, converted on the way where rate or channels differ. Counts and positions
// are in frames of the host's format. SetFormat and SelectFormat, then Open, any number of Write and Seek,
// then Close, which completes the file. One thread at a time calls a writer. The order of the operations is
// the binary border: nothing moves, nothing is added.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"
#include "AudioCodec/wave/riff/AudioFormatInfo.h"
#include "AudioCodec/wave/riff/Origin.h"

namespace vlacwav3 {

struct IAC3Metadata;

// Flag of Open: a file that is there already may be overwritten.
inline constexpr uint32_t OPEN_OVERWRITE = 1;

struct IAC3Writer : IAttributeContainer64 {
    // Makes the file, an empty WAV at first; a file that is still being written is completed before.
    // RESULT_OK; RESULT_FAILED for every reason not to: no selected format, channels of which neither count
    // is 1 nor both are equal, a file that can't be made, no memory. No file is open then.
    virtual Result Open(const char16_t* path /*in*/, uint32_t flags /*in: 0 or OPEN_OVERWRITE*/) = 0;
    // Moves to a frame; with conversion the last few frames before it, which the filter still holds, are
    // given up. RESULT_OK; RESULT_BAD_ARGUMENT for null or another origin, RESULT_NOT_OPEN before
    // SelectFormat, RESULT_NOT_WAVE where the file can't move there, RESULT_NO_MEMORY.
    virtual Result Seek(uint32_t origin /*in: ORIGIN_...*/, int64_t offset /*in: frames*/,
                        int64_t* position /*out: frames*/) = 0;
    // RESULT_OK: all frames were taken. RESULT_BAD_ARGUMENT for null, RESULT_NOT_OPEN before SelectFormat,
    // RESULT_FAILED before an Open, RESULT_WRITE_FAILED where the disk or 4 GiB are full, RESULT_NO_MEMORY.
    virtual Result Write(const void* buffer /*in: frames × channels × 2 bytes*/, uint32_t frames /*in*/,
                         uint32_t* framesAccepted /*out*/) = 0;
    // RESULT_OK, RESULT_BAD_ARGUMENT for null.
    virtual Result GetLength(uint64_t* frames /*out: accepted since the writer was made*/) = 0;
    // Writes what is held back, and the metadata, ends the file and takes back the selected format; the next
    // file needs a SelectFormat of its own. RESULT_OK, also where the system could not write: compare the
    // file with what was accepted where that matters. RESULT_NO_MEMORY: the file is without its metadata, and
    // so it is with RESULT_WRITE_FAILED, where they would reach past 4 GiB.
    virtual Result Close() = 0;
    // What Write will be given after the next Open. Channels and rate are cut to 16 bits; samples are 16 bits
    // wide, whatever bytesPerSample says. Always RESULT_OK.
    virtual Result SetFormat(uint32_t channels /*in*/, uint32_t rate /*in: Hz*/,
                             uint32_t bytesPerSample /*in: 2*/) = 0;
    // RESULT_OK, RESULT_BAD_ARGUMENT for null.
    virtual Result GetFormat(uint32_t* channels /*out*/, uint32_t* rate /*out: Hz*/,
                             uint32_t* bytesPerSample /*out*/) = 0;
    // Kept as a copy and written by Close; several calls merge. RESULT_OK, RESULT_NO_MEMORY, or
    // RESULT_BAD_ARGUMENT for null.
    virtual Result SetMetadata(IAC3Metadata* metadata /*in*/) = 0;
    // A copy of what is kept. RESULT_OK; otherwise *metadata is null: RESULT_BAD_ARGUMENT for a null
    // receiver, RESULT_NO_MEMORY.
    virtual Result GetMetadata(IAC3Metadata** metadata /*out: one reference*/) = 0;
    // RESULT_OK, RESULT_BAD_ARGUMENT for an index that isn't below GetFormatCount.
    virtual Result SelectFormat(uint32_t index /*in*/) = 0;
    // The format that was selected last, 0 before, and all that GetFormatInfo tells of it. RESULT_OK,
    // RESULT_BAD_ARGUMENT for null.
    virtual Result GetSelectedFormat(uint32_t* index /*out*/, AudioFormatInfo* format /*out*/,
                                     char16_t** text /*out: owned by the caller, may be null*/) = 0;
    // The number of stock formats. Always RESULT_OK.
    virtual Result GetFormatCount(uint32_t* count /*out, may be null*/) = 0;
    // A stock format and its name, in the language of ATTR_TEXT_LANGUAGE on this object, a platform language
    // id, else in English. RESULT_OK; RESULT_BAD_ARGUMENT for an index that isn't below the count, and for a
    // null format.
    virtual Result GetFormatInfo(uint32_t index /*in*/, AudioFormatInfo* format /*out*/,
                                 char16_t** text /*out: owned by the caller, may be null*/) = 0;

protected:
    ~IAC3Writer() = default;
};

inline constexpr GUID IID_IAC3Writer = MakeGuid("EF1B9CF6-D57F-4623-AC59-B72AE3810CDE");

}  // namespace vlacwav3
