// The bytes of an image, taken from a stream in blocks of 4096: a decoder reads them in order, and never has
// them all in memory. A stream that fails looks like one that has ended. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/com/Stream.h"

class ImageSource {
public:
    explicit ImageSource(IStream& stream) : m_stream(stream) {}
    ImageSource(const ImageSource&) = delete;
    ImageSource& operator=(const ImageSource&) = delete;

    // What has been taken from the stream and not yet been read.
    const uint8_t* Data() const { return m_buffer + m_begin; }
    size_t Left() const { return m_end - m_begin; }

    // Takes from the stream until so many bytes are left, at most 16; false if it ends before.
    bool Require(size_t size);
    // Takes the next block in place of what is left; false at the end.
    bool Refill();
    // Reads so many bytes, returns how many came.
    size_t Read(uint8_t* bytes, size_t size);
    bool ReadAll(uint8_t* bytes, size_t size) { return Read(bytes, size) == size; }
    bool Skip(uint64_t size);

private:
    bool TakeMore();

    IStream& m_stream;
    size_t m_begin = 0;
    size_t m_end = 0;
    uint8_t m_buffer[4096] = {};
};
