// A caller's byte stream. The module reads and seeks it and calls nothing else.
#pragma once

#include "platform/com/Unknown.h"

inline constexpr DWORD STREAM_SEEK_SET = 0;  // from the start
inline constexpr DWORD STREAM_SEEK_CUR = 1;  // from the current place
inline constexpr DWORD STREAM_SEEK_END = 2;  // from the end

struct STATSTG {
    WCHAR* pwcsName;
    DWORD type;
    ULARGE_INTEGER cbSize;
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    DWORD grfMode;
    DWORD grfLocksSupported;
    GUID clsid;
    DWORD grfStateBits;
    DWORD reserved;
};

struct ISequentialStream : IUnknown {
    virtual HRESULT Read(void* buffer /*out*/, uint32_t size /*in: bytes*/,
                         uint32_t* done /*out: bytes*/) = 0;
    virtual HRESULT Write(const void* buffer /*in*/, uint32_t size /*in: bytes*/, uint32_t* done /*out*/) = 0;

protected:
    ~ISequentialStream() = default;
};

struct IStream : ISequentialStream {
    virtual HRESULT Seek(LARGE_INTEGER move /*in: bytes*/, uint32_t origin /*in*/,
                         ULARGE_INTEGER* position /*out: bytes from the start, may be null*/) = 0;
    virtual HRESULT SetSize(ULARGE_INTEGER size) = 0;
    virtual HRESULT CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* read,
                           ULARGE_INTEGER* written) = 0;
    virtual HRESULT Commit(uint32_t flags) = 0;
    virtual HRESULT Revert() = 0;
    virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, uint32_t type) = 0;
    virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, uint32_t type) = 0;
    virtual HRESULT Stat(STATSTG* status, uint32_t flags) = 0;
    virtual HRESULT Clone(IStream** copy) = 0;

protected:
    ~IStream() = default;
};

inline constexpr GUID IID_ISequentialStream = MakeGuid("0C733A30-2A1C-11CE-ADE5-00AA0044773D");
inline constexpr GUID IID_IStream = MakeGuid("0000000C-0000-0000-C000-000000000046");
