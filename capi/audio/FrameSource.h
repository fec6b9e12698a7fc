// Audio as 16-bit frames, one stage of the way from a source to the program. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

class FrameSource {
public:
    FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;
    virtual ~FrameSource() = default;

    // Reads up to `frames` of the next frames, at least one; 0 is the end. Throws Failure where not even one
    // can be had, and std::bad_alloc; a later call tries again at the same place.
    virtual size_t Read(int16_t* buffer, size_t frames) = 0;
    // The next frame will be this one, or the end where there are fewer. What that needs is done by the
    // next Read.
    virtual void SeekTo(int64_t frame) = 0;
    // Of the next frame.
    virtual int64_t Position() const = 0;
    virtual uint32_t Channels() const = 0;
};
