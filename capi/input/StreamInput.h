// A program's stream that can be moved in, from where it stood.
#pragma once

#include "capi/input/CallerStream.h"
#include "capi/input/Input.h"

class StreamInput final : public Input {
public:
    StreamInput(std::shared_ptr<const CallerStream> stream, uint64_t start, uint64_t size);

private:
    size_t Get(uint64_t place, void* buffer, size_t count) override;

    const std::shared_ptr<const CallerStream> m_stream;
    const uint64_t m_start;
    std::optional<uint64_t> m_place;  // where it stands; nothing where that isn't known
};
