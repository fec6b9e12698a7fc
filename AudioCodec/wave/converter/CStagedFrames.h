// 16-bit source frames on their way through the converter: a block of 4096 bytes, filled by whoever owns it
// and used up in as many pieces as the converter likes. Knows neither the source nor a position.
//
// Decisions: while the converter warms up, a short block is filled up before it is offered, so that a source
// that brings its first frames in pieces sounds like one that doesn't. Above 32 channels the block is larger,
// since the converter would take fewer than 64 frames for a source that ends there.
#pragma once

#include <algorithm>
#include <vector>

#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/shell/object/ResultCodes.h"
#include "AudioCodec/wave/converter/CSampleRateConverter.h"

class CStagedFrames {
public:
    void Drop() { m_frames = m_used = 0; }

    // Puts what `read(buffer, frames, framesRead)` returns after what is staged, as far as there is room.
    // Returns its result, or RESULT_NO_MEMORY; after a failure no more is staged than before.
    template <class Read>
    Result Refill(uint32_t channels, Read read) {
        // Whole frames alone, so that no block ends inside one. No channels: the block counts as mono.
        const size_t samplesPerFrame = std::max<uint32_t>(channels, 1);
        const Result room = MakeRoom(samplesPerFrame);
        if (room != RESULT_OK) return room;
        DropUsed(samplesPerFrame);
        const auto frames = static_cast<uint32_t>(Capacity() / samplesPerFrame - m_frames);
        uint32_t added = 0;
        const Result result = read(Samples() + m_frames * samplesPerFrame, frames, &added);
        if (result == RESULT_OK) m_frames += added;
        return result;
    }

    // Makes up to `frames` output frames and counts them in `made`, also when `refill()`, called for each new
    // block, ends it by a failure, which is the result. Fewer are the end of the source.
    template <class Refill>
    Result Convert(CSampleRateConverter& converter, int16_t* output, uint32_t frames, uint32_t& made,
                   Refill refill) {
        made = 0;
        const Result prepared = AtBorder(RESULT_NO_MEMORY, [&] { return converter.Prepare(), RESULT_OK; });
        if (prepared != RESULT_OK) return prepared;
        // Invariant: m_used <= m_frames, and the samples from m_used on are input that the
        // converter hasn't consumed.
        while (made != frames) {
            const Result filled = FillUp(converter, refill);
            if (filled != RESULT_OK) return filled;
            uint32_t taken = Left();
            uint32_t given = frames - made;
            converter.Process(Samples() + size_t{m_used} * converter.SourceChannels(), &taken, output,
                              &given);
            // The tail is used up. Input that was taken without a frame coming of it isn't the end: several
            // may be needed for one frame, and they are gone from here.
            if (given == 0 && taken == 0) break;
            m_used = std::min(m_used + taken, m_frames);
            output += size_t{given} * converter.OutputChannels();
            made += given;
        }
        return RESULT_OK;
    }

private:
    static constexpr size_t kSamples = 2048;
    static constexpr size_t kLeastFrames = 64;  // the most that a converter wants at once

    uint32_t Left() const { return m_frames - m_used; }
    int16_t* Samples() { return m_wide.empty() ? m_samples : m_wide.data(); }
    size_t Capacity() const { return m_wide.empty() ? kSamples : m_wide.size(); }

    // Brings what the converter wants to be offered, or, with a refill that brings nothing more, all there
    // is. A block that has run empty is the usual case; what is left of one is offered before anything new.
    template <class Refill>
    Result FillUp(CSampleRateConverter& converter, Refill& refill) {
        while (Left() < converter.WantedOffer()) {
            const uint32_t before = Left();
            const Result refilled = refill();
            if (refilled != RESULT_OK) return refilled;
            if (Left() == before) {
                converter.EndWith(before);
                break;
            }
        }
        return RESULT_OK;
    }

    Result MakeRoom(size_t channels) {
        if (kLeastFrames * channels <= Capacity()) return RESULT_OK;
        return AtBorder(RESULT_NO_MEMORY, [&] {
            Drop();  // of a source of fewer channels
            m_wide.resize(kLeastFrames * channels);
            return RESULT_OK;
        });
    }

    void DropUsed(size_t channels) {
        if (m_used == 0) return;
        int16_t* const samples = Samples();
        std::copy(samples + m_used * channels, samples + m_frames * channels, samples);
        m_frames -= m_used;
        m_used = 0;
    }

    int16_t m_samples[kSamples] = {};
    std::vector<int16_t> m_wide;  // in place of m_samples, once there were more than 32 channels
    uint32_t m_frames = 0;
    uint32_t m_used = 0;  // at most m_frames
};
