// Where a walk over chunks takes its bytes from: in order, with moves forward. The owner of a file or a
// stream adapts it; bytes in memory have SpanSource, files BlockSource. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    // Reads so many bytes and moves past them. False for fewer; what `buffer` holds is open then.
    virtual bool Read(void* buffer, size_t count) = 0;

    // Moves on over so many bytes, also past the end, where every read comes short. False where
    // the source refuses.
    virtual bool Skip(uint64_t count) = 0;

    // Whether so many bytes follow, asked before memory is taken for them.
    virtual bool Holds(uint64_t count) = 0;

    // The current place in bytes from the start of the source. False where it can't be told.
    virtual bool Tell(uint64_t& place) = 0;
};
