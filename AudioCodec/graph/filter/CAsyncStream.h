// A source of bytes that the request queue reads from: one place in it, moved by reading. Lock keeps a seek
// and the read after it together; all else is any thread's.
#pragma once

#include "platform/base/Types.h"

class CAsyncStream {
public:
    virtual ~CAsyncStream() = default;

    // Moves to a place, in bytes from the start.
    virtual HRESULT SetPointer(int64_t position) = 0;
    // Reads up to `size` bytes from where the source stands. `aligned` says that place, size and buffer are
    // aligned as asked for; `done`, which may be null, is written by a success alone.
    virtual HRESULT Read(BYTE* buffer /*out*/, DWORD size, BOOL aligned, DWORD* done /*out*/) = 0;
    // Bytes in all; `available`, which may be null, gets those that are there by now.
    virtual int64_t Size(int64_t* available /*out*/) = 0;
    // What places, sizes and buffers of aligned reads must be multiples of: a power of two.
    virtual DWORD Alignment() = 0;
    // Recursive.
    virtual void Lock() = 0;
    virtual void Unlock() = 0;
};
