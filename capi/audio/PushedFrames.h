// A stream for the module's reader whose audio is pushed in from the other side: a head that promises audio
// without an end, and then what was pushed. What isn't there yet reads as the end, so it is asked only when
// there is enough. 16-bit frames; one thread at a time.
#pragma once

#include <cstddef>
#include <vector>

#include "capi/audio/ReadOnlyStream.h"
#include "riff/PcmHead.h"

class PushedFrames final : public ReadOnlyStream {
public:
    PushedFrames(uint32_t channels, uint32_t rate);

    void Push(const int16_t* samples, size_t frames);
    size_t Channels() const { return m_channels; }
    size_t Frames() const { return (m_samples.size() - m_used) / m_channels; }  // pushed and not yet read
    // As the head tells it.
    static constexpr uint32_t kPromisedBytes = 0xFFFFFF00;

    int32_t Read(void* buffer, uint32_t size, uint32_t* done) override;

private:
    uint64_t SizeOfStream() const override { return m_head.size() + kPromisedBytes; }

    size_t m_channels;
    PcmHead m_head;
    std::vector<int16_t> m_samples;
    size_t m_used = 0;  // samples of it that were read
};
