// Rate and channels of frames that are pushed in, converted by a reader of the module, which would pull them.
// For rates that the module's writer can't be told. One thread at a time.
#pragma once

#include <functional>

#include "AudioCodec/wave/IAC3StreamReader.h"
#include "capi/Module.h"
#include "capi/audio/PushedFrames.h"

struct AudioShape {
    uint32_t rate = 0;  // frames a second
    uint32_t channels = 0;
};

class PushedConversion {
public:
    // Takes frames of the shape that was asked for; throws to end the work.
    using Taker = std::function<void(const int16_t* samples, uint32_t frames)>;

    // Channels that are neither equal nor one on a side must not come here. Throws Failure.
    PushedConversion(const Module& module, const AudioShape& from, const AudioShape& to);

    // How many frames come out for one that goes in, as the module reckons.
    double Ratio() const { return m_ratio; }
    // Hands on what can be made of all that was pushed by now. Throws Failure, and what `taker` throws.
    void Push(const int16_t* samples, size_t frames, const Taker& taker);
    // The rest, with the filter's end. Nothing may be pushed after it.
    void Drain(const Taker& taker);

private:
    uint32_t ReadBlock();

    size_t m_taken = 0;      // frames
    PushedFrames m_waiting;  // before the reader, which borrows it
    RefPtr<IAC3StreamReader> m_reader;
    double m_ratio = 1;
    size_t m_needed = 0;  // frames that a block can need
    std::vector<int16_t> m_block;
};
