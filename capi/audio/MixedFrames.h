// The frames of 5.1 as stereo.
#pragma once

#include <vector>

#include "capi/audio/FrameSource.h"

class MixedFrames final : public FrameSource {
public:
    // Borrows the source of six channels.
    explicit MixedFrames(FrameSource& source) : m_source(source) {}

    size_t Read(int16_t* buffer, size_t frames) override;
    void SeekTo(int64_t frame) override { m_source.SeekTo(frame); }
    int64_t Position() const override { return m_source.Position(); }
    uint32_t Channels() const override { return 2; }

private:
    FrameSource& m_source;
    std::vector<int16_t> m_block;
};
