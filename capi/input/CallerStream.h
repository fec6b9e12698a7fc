// A program's own stream, checked and closed once: an answer that can't be is a failure, never more bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "capi/vlwav.h"

class CallerStream {
public:
    // Takes the stream over as it came from the program, whose record may be older than the library's; null
    // where it is none (null, too small). From here on `close` will be called. Throws std::bad_alloc, after
    // it was called.
    static std::shared_ptr<CallerStream> TakeOver(const vlw_stream* stream);

    explicit CallerStream(const vlw_stream& stream) : m_stream(stream) {}
    CallerStream(const CallerStream&) = delete;
    CallerStream& operator=(const CallerStream&) = delete;
    ~CallerStream();

    bool CanRead() const { return m_stream.read != nullptr; }
    bool CanWrite() const { return m_stream.write != nullptr; }

    // At least one byte; 0 is the end. Throws Failure.
    size_t Read(void* buffer, size_t count) const;
    // Writes all of it, in as many turns as the stream likes. Returns an errno, 0 for success.
    int Write(const void* bytes, size_t count) const;
    // The new place; nothing where there is none to go to.
    std::optional<int64_t> Seek(int64_t offset, int whence) const;
    // Goes to a place that there is. Throws Failure.
    void MoveTo(int64_t place) const;

private:
    vlw_stream m_stream;
};
