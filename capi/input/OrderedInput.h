// A pipe, a socket, a device, or any other source that gives its bytes once and in order. They come in
// blocks, of which the end is kept, so that what was looked at can be read again,
// and as much before it as is asked for.
#pragma once

#include <functional>
#include <vector>

#include "capi/input/Input.h"

class OrderedInput final : public Input {
public:
    // Takes up to so many of the next bytes, at least one; 0 is the end. Throws Failure.
    using TakeNext = std::function<size_t(void* buffer, size_t count)>;

    OrderedInput(TakeNext takeNext, FileLabel label);

private:
    size_t Get(uint64_t place, void* buffer, size_t count) override;
    bool Fill();

    const TakeNext m_takeNext;
    std::vector<char> m_block;  // room for what is kept and one more read
    uint64_t m_blockAt = 0;     // its place in the source
    size_t m_held = 0;          // bytes of it that are there
};
