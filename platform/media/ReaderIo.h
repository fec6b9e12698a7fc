// Gives the demuxer the bytes of an IAsyncReader. A source that honours positions is read at any place; one
// that doesn't is read in order from the start and never asked for another place, since it would answer with
// its next bytes and the demuxer would lose some in silence. The size alone is known of both.
//
// A read that failed or brought nothing is the last one until Resume: the libraries would try again and take
// what follows for what they missed.
#pragma once

#include <atomic>

#include "platform/com/RefPtr.h"
#include "platform/media/FFmpeg.h"
#include "platform/media/HiddenChunks.h"
#include "platform/media/MediaSample.h"

class ReaderIo {
public:
    // While `stop` is set, reads fail. Both must outlive this. Throws std::bad_alloc.
    ReaderIo(IAsyncReader& reader, bool honoursPositions, const std::atomic<bool>& stop);
    ReaderIo(const ReaderIo&) = delete;
    ReaderIo& operator=(const ReaderIo&) = delete;

    AVIOContext* Context() const { return m_context.get(); }
    LONGLONG Size() const { return m_size; }  // bytes

    // Of the read that failed, or S_OK. The libraries tell it as damage, or as the end.
    HRESULT Failure() const { return FAILED(m_last) ? m_last : S_OK; }
    // Until then chunks that no audio needs don't get through.
    void EndOfHead() { m_hidden.End(); }
    // Lets reads through again, from wherever the next seek leads.
    void Resume();

private:
    struct FreeContext {
        void operator()(AVIOContext* context) const;
    };
    static int OnRead(void* self, uint8_t* buffer, int size);
    static int64_t OnSeek(void* self, int64_t offset, int whence);
    int Read(uint8_t* buffer, int size);
    HRESULT ReadOn(uint8_t* buffer, LONG size, LONG& done);

    IAsyncReader& m_reader;
    const bool m_honoursPositions;
    const std::atomic<bool>& m_stop;
    LONGLONG m_size = 0;
    LONGLONG m_position = 0;  // of the next byte to ask for
    HiddenChunks m_hidden;
    uint8_t m_kept[kChunkHeaderSize] = {};  // the first bytes of a header, in front of m_position
    size_t m_keptBytes = 0;
    HRESULT m_last = S_OK;  // S_FALSE: the source has ended early
    std::unique_ptr<AVIOContext, FreeContext> m_context;
};
