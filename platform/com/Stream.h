// A byte stream, which a host implements to have the module read from it. The module calls Read and Seek,
// counts no references and calls nothing else: all other operations may answer PLATFORM_NOT_IMPLEMENTED.
#pragma once

#include "platform/base/Records.h"
#include "platform/com/Unknown.h"

namespace vlacwav3 {

inline constexpr uint32_t STREAM_SEEK_SET = 0;  // from the start
inline constexpr uint32_t STREAM_SEEK_CUR = 1;  // from the current place
inline constexpr uint32_t STREAM_SEEK_END = 2;  // from the end

// What Stat tells of a stream, under the names of the platform.
struct STATSTG {
    // The module asks for none of it.
    char16_t* pwcsName;
    uint32_t type;
    ULARGE_INTEGER cbSize;  // bytes
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    uint32_t grfMode;
    uint32_t grfLocksSupported;
    GUID clsid;
    uint32_t grfStateBits;
    uint32_t reserved;
};

// Bytes that come and go in order.
struct ISequentialStream : IUnknown {
    // Copies bytes from the current place and moves it on. PLATFORM_OK, or a failure: any other result counts
    // as one, also PLATFORM_LESS. The module asks once and takes fewer bytes than it asked for as the end of
    // the stream, so what lies above a socket or a pipe reads on by itself until all of them are there.
    virtual int32_t Read(void* buffer /*out*/, uint32_t size /*in: bytes*/,
                         uint32_t* done /*out: bytes copied*/) = 0;
    // Writes at the current place and moves it on. PLATFORM_OK, or a failure.
    virtual int32_t Write(const void* buffer /*in*/, uint32_t size /*in: bytes*/,
                          uint32_t* done /*out: bytes written, may be null*/) = 0;

protected:
    ~ISequentialStream() = default;
};

// Bytes with a place among them that can be moved: what a host gives to OpenStream.
struct IStream : ISequentialStream {
    // Moves the current place, to beyond the end too. PLATFORM_OK, or a failure, the place unmoved.
    virtual int32_t Seek(LARGE_INTEGER move /*in: bytes*/, uint32_t origin /*in: STREAM_SEEK_...*/,
                         ULARGE_INTEGER* position /*out: bytes from the start, may be null*/) = 0;
    // Cuts the stream, or makes it longer. PLATFORM_OK, or a failure.
    virtual int32_t SetSize(ULARGE_INTEGER size /*in: bytes*/) = 0;
    // Copies bytes from the current place to the current place of `target`. PLATFORM_OK, or a failure.
    virtual int32_t CopyTo(IStream* target /*in*/, ULARGE_INTEGER size /*in: bytes*/,
                           ULARGE_INTEGER* read /*out: bytes, may be null*/,
                           ULARGE_INTEGER* written /*out: bytes, may be null*/) = 0;
    // Keep or take back what was written into a stream that collects changes. PLATFORM_OK, or a failure.
    virtual int32_t Commit(uint32_t flags /*in*/) = 0;
    virtual int32_t Revert() = 0;
    // Keep others away from a range of bytes, and let them in again. PLATFORM_OK, or a failure.
    virtual int32_t LockRegion(ULARGE_INTEGER offset /*in: bytes*/, ULARGE_INTEGER size /*in: bytes*/,
                               uint32_t type /*in*/) = 0;
    virtual int32_t UnlockRegion(ULARGE_INTEGER offset /*in: bytes*/, ULARGE_INTEGER size /*in: bytes*/,
                                 uint32_t type /*in*/) = 0;
    // Tells what kind of stream this is. PLATFORM_OK, or a failure.
    virtual int32_t Stat(STATSTG* status /*out*/, uint32_t flags /*in*/) = 0;
    // Another stream over the same bytes, with a place of its own. PLATFORM_OK, or a failure, *copy null.
    virtual int32_t Clone(IStream** copy /*out: one reference*/) = 0;

protected:
    ~IStream() = default;
};

inline constexpr GUID IID_ISequentialStream = MakeGuid("0C733A30-2A1C-11CE-ADE5-00AA0044773D");
inline constexpr GUID IID_IStream = MakeGuid("0000000C-0000-0000-C000-000000000046");

}  // namespace vlacwav3
