// A program's own target of bytes, which is closed once, whatever happens.
#pragma once

#include <cstddef>

#include "capi/vlwav.h"

class StreamSink {
public:
    // Null, and a record without size, count as a stream that has nothing.
    explicit StreamSink(const vlw_stream* stream) noexcept;
    StreamSink(StreamSink&& other) noexcept;
    StreamSink& operator=(StreamSink&&) = delete;
    ~StreamSink();

    bool IsWritable() const { return m_stream.write != nullptr; }
    // Writes all of it, in as many turns as the stream likes. Returns an errno, 0 for success.
    int Write(const void* bytes, size_t size) const;

private:
    vlw_stream m_stream{};
};
