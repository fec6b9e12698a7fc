// 16-bit source frames on their way through the converter: a block of 4096 bytes, filled by whoever owns it
// and used up in as many pieces as the converter likes. Knows neither the source nor a position.
#pragma once

#include <algorithm>

#include "AudioCodec/shell/object/ResultCodes.h"
#include "AudioCodec/wave/converter/CSampleRateConverter.h"

class CStagedFrames {
public:
    void Drop() { m_frames = m_used = 0; }

    // Takes a block of what `read(buffer, frames, framesRead)` returns, in place of what is there. Returns
    // its result; nothing is staged after a failure.
    template <class Read>
    Result Refill(uint32_t channels, Read read) {
        Drop();
        // Whole frames alone, so that no block ends inside one. No channels: the block counts as mono.
        const uint32_t frames = kSamples / std::max<uint32_t>(channels, 1);
        const Result result = read(m_samples, frames, &m_frames);
        if (result != RESULT_OK) Drop();
        return result;
    }

    // Makes up to `frames` output frames and counts them in `made`, also when `refill()`, called for each new
    // block, ends it by a failure, which is the result. Fewer are the end of the source.
    template <class Refill>
    Result Convert(CSampleRateConverter& converter, int16_t* output, uint32_t frames, uint32_t& made,
                   Refill refill) {
        // Invariant: m_used <= m_frames, and m_samples from m_used on is input that the
        // converter hasn't consumed.
        for (made = 0; made != frames;) {
            if (m_used == m_frames) {
                // Only an empty block is refilled: the rest of one is offered again before anything after it.
                // A refill that brings no frames is the end, and makes Process feed the tail.
                const Result refilled = refill();
                if (refilled != RESULT_OK) return refilled;
            }
            uint32_t taken = m_frames - m_used;
            uint32_t given = frames - made;
            converter.Process(m_samples + size_t{m_used} * converter.SourceChannels(), &taken, output,
                              &given);
            // Nothing came of what was offered: the tail is used up, or the source is too short for the
            // warm-up and would be offered over and over. A last block that doesn't reach the next output
            // frame ends the call too. m_used stays then, even where input was consumed: the next call offers
            // the block again.
            if (given == 0) break;
            m_used = std::min(m_used + taken, m_frames);
            output += size_t{given} * converter.OutputChannels();
            made += given;
        }
        return RESULT_OK;
    }

private:
    static constexpr uint32_t kSamples = 2048;

    int16_t m_samples[kSamples] = {};
    uint32_t m_frames = 0;
    uint32_t m_used = 0;  // at most m_frames
};
