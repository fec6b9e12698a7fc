// An Input for a walk over chunks. A read that fails ends the walk by its Failure, never as if the file
// ended.
#pragma once

#include "capi/input/Input.h"
#include "riff/BlockSource.h"

// Of known size, in blocks.
class InputBlocks final : public BlockSource {
public:
    explicit InputBlocks(Input& input) : BlockSource(input.Size().value_or(0)), m_input(input) {}

private:
    size_t ReadAt(uint64_t place, void* buffer, size_t count) override {
        return m_input.ReadWholeAt(place, buffer, count);
    }

    Input& m_input;
};

// In order.
class InputInOrder final : public ByteSource {
public:
    explicit InputInOrder(Input& input) : m_input(input) {}

    bool Read(void* buffer, size_t count) override;
    bool Skip(uint64_t count) override;
    bool Holds(uint64_t count) override;
    bool Tell(uint64_t& place) override;

private:
    Input& m_input;
    uint64_t m_place = 0;
};
