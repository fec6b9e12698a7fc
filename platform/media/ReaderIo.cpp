#include "platform/media/ReaderIo.h"

#include <algorithm>
#include <new>
#include <utility>

namespace {
constexpr int kBufferSize = 32768;
}

ReaderIo::ReaderIo(IAsyncReader& reader, bool honoursPositions, const std::atomic<bool>& stop)
    : m_reader(reader), m_honoursPositions(honoursPositions), m_stop(stop) {
    LONGLONG available = 0;
    if (FAILED(reader.Length(&m_size, &available)) || m_size < 0) m_size = 0;
    m_size = std::min(m_size, kEndOfTime / kTimeUnitsPerSecond);  // places are told as times
    auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    if (!buffer) throw std::bad_alloc();
    m_context.reset(avio_alloc_context(buffer, kBufferSize, 0, this, OnRead, nullptr, OnSeek));
    if (!m_context) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    m_context->seekable = honoursPositions ? AVIO_SEEKABLE_NORMAL : 0;
}

void ReaderIo::FreeContext::operator()(AVIOContext* context) const {
    av_freep(&context->buffer);
    avio_context_free(&context);
}

int ReaderIo::OnRead(void* self, uint8_t* buffer, int size) {
    return static_cast<ReaderIo*>(self)->Read(buffer, size);
}

int ReaderIo::Read(uint8_t* buffer, int size) {
    if (m_stop) return AVERROR_EXIT;
    // What was kept back comes first, and together with it there is a whole header at last.
    size_t there = std::exchange(m_keptBytes, 0);
    std::copy_n(m_kept, there, buffer);
    size_t given = 0;
    while (given == 0 && m_position < m_size && there < static_cast<size_t>(size)) {
        LONG done = 0;
        const auto room = static_cast<LONGLONG>(static_cast<size_t>(size) - there);
        const auto length = static_cast<LONG>(std::min<LONGLONG>(room, m_size - m_position));
        uint8_t* const to = buffer + there;
        if (m_last == S_OK) m_last = AtBorder(ResultOfThrow, [&] { return ReadOn(to, length, done); });
        const auto place = static_cast<uint64_t>(m_position) - there;
        m_position += done;
        there += static_cast<size_t>(done);
        if (FAILED(m_last)) return AVERROR(EIO);
        if (done == 0) break;
        given = m_hidden.Pass(place, {buffer, there});
    }
    if (given == 0) given = there;  // the source has ended
    m_keptBytes = there - given;
    std::copy_n(buffer + given, m_keptBytes, m_kept);
    return given > 0 ? static_cast<int>(given) : AVERROR_EOF;
}

HRESULT ReaderIo::ReadOn(uint8_t* buffer, LONG size, LONG& done) {
    const auto sample = Make<MediaSample>(buffer, size);
    REFERENCE_TIME start = m_position * kTimeUnitsPerSecond;
    REFERENCE_TIME stop = start + size * kTimeUnitsPerSecond;
    sample->SetTime(&start, &stop);
    const HRESULT result = m_reader.SyncReadAligned(sample.Get());
    if (FAILED(result)) return result;
    done = sample->GetActualDataLength();
    return done > 0 ? S_OK : S_FALSE;
}

void ReaderIo::Resume() {
    m_last = S_OK;
    m_context->error = 0;
}

int64_t ReaderIo::OnSeek(void* self, int64_t offset, int whence) {
    auto& io = *static_cast<ReaderIo*>(self);
    if (whence & AVSEEK_SIZE) return io.m_size;
    if (!io.m_honoursPositions || (whence & ~AVSEEK_FORCE) != SEEK_SET || offset < 0) return AVERROR(ENOSYS);
    io.m_position = offset;
    io.m_keptBytes = 0;
    return offset;
}
