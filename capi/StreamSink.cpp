#include "capi/StreamSink.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

namespace {
constexpr size_t kFirstSize = offsetof(vlw_stream, close) + sizeof(void (*)(void*));  // in version 1.0
}

StreamSink::StreamSink(const vlw_stream* stream) noexcept {
    if (stream && stream->size >= kFirstSize)
        std::memcpy(&m_stream, stream, std::min(stream->size, sizeof m_stream));
}

StreamSink::StreamSink(StreamSink&& other) noexcept : m_stream(std::exchange(other.m_stream, {})) {}

StreamSink::~StreamSink() {
    if (m_stream.close) m_stream.close(m_stream.user);
}

int StreamSink::Write(const void* bytes, size_t size) const {
    const auto* at = static_cast<const char*>(bytes);
    while (size > 0) {
        const int64_t done = m_stream.write(m_stream.user, at, size);
        if (done == -EINTR) continue;
        if (done < 0 && done >= -INT_MAX) return static_cast<int>(-done);
        // None, or more than were offered: a stream that can't be relied on.
        if (done <= 0 || static_cast<uint64_t>(done) > size) return EIO;
        at += done;
        size -= static_cast<size_t>(done);
    }
    return 0;
}
