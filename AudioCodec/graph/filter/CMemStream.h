// A caller's stream as a source of bytes. Holds no bytes itself: all of them are read from that stream on
// demand. The size is the one that the stream told at construction.
//
// Where it stands is what it tells, also with a failed seek; one that tells nothing stands where it stood.
// Any thread.
#pragma once

#include "AudioCodec/graph/filter/CAsyncStream.h"
#include "AudioCodec/graph/filter/CCritSec.h"
#include "platform/base/Types.h"
#include "platform/com/Stream.h"

class CMemStream final : public CAsyncStream {
public:
    // Rewinds the stream, which isn't counted and outlives this object. One that tells no place has size 0.
    // Throws std::bad_alloc.
    explicit CMemStream(IStream* stream);

    // No check of the range: the result is the stream's.
    HRESULT SetPointer(int64_t position) override;
    HRESULT Read(BYTE* buffer, DWORD size, BOOL aligned, DWORD* done) override;
    int64_t Size(int64_t* available) override;
    DWORD Alignment() override { return 1; }
    void Lock() override VL_ACQUIRE(m_lock) { m_lock.Lock(); }
    void Unlock() override VL_RELEASE(m_lock) { m_lock.Unlock(); }

    // Where the stream stands, as far as is known here.
    int64_t Position();

private:
    HRESULT Seek(int64_t move, DWORD origin, int64_t& reached);

    CCritSec m_lock;
    int64_t m_length = 0;  // bytes, fixed
    int64_t m_position VL_GUARDED_BY(m_lock) = 0;
    IStream* const m_stream;
};
