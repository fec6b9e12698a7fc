// A caller's stream as a source: each read and each move is one call, and nothing is read ahead, so that the
// stream sees what it always saw. Only S_OK is success. The stream is borrowed.
#pragma once

#include "platform/com/Stream.h"
#include "riff/ByteSource.h"

class StreamSource final : public ByteSource {
public:
    explicit StreamSource(IStream& stream) : m_stream(stream) {}

    bool Read(void* buffer, size_t count) override;
    bool Skip(uint64_t count) override;
    // A stream tells its size to no call that all streams have, so above 64 KiB its last byte in
    // question is touched.
    bool Holds(uint64_t count) override;
    bool Tell(uint64_t& place) override;

    // Moves by so many bytes from `origin`, and tells where to, if that is asked.
    bool Move(int64_t distance, uint32_t origin, uint64_t* place = nullptr);

private:
    IStream& m_stream;
};
