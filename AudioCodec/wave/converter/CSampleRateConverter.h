// 16-bit PCM of one rate and channel count into another: a polyphase filter of L rows of 32 taps
// (Hann-windowed sinc, 16 input frames to each side), stepping M input frames in L output frames. Bit-exact
// on every run. Knows no file and no 8-bit samples; its owners widen before it, narrow after it, and skip it
// when nothing changes. Channel counts that are neither equal nor one on a side give frames without samples:
// its owners refuse them where they must. One thread at a time. Configure, one reset, then any number of
// Process calls.
//
// Decisions: an offer shorter than the warm-up ends it, as a source that has no more: its frames are
// consumed, and zeros of the tail stand after them. So the warm-up never exceeds 32 and nothing lands outside
// its row. A call without input before any has come changes nothing. Negative positions count as 0. Rates
// that give no ratio (0, negative) leave L = M = 1. Nothing is built before it is needed, so a source that is
// only looked at costs no filter. The input is kept as the 16-bit samples that it came in as, and taken in as
// far as it is offered; what counts as consumed is what batches of 32 frames would have used.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "AudioCodec/wave/converter/PlanarFrames.h"

class PhaseFilter;

class CSampleRateConverter {
public:
    // Of the input. The rows of so many take half a MiB.
    static constexpr uint32_t kMostChannels = 4096;

    // Takes a pair of formats and stands at the start of the input.
    void Configure(uint32_t srcChannels, int32_t srcRate, uint32_t dstChannels, int32_t dstRate);
    // Converts by this kernel in place of the chosen one, for tests and measurements. Before it is prepared.
    void UseKernel(const ConverterKernel& kernel) { m_wantedKernel = &kernel; }
    // Builds the filter, unless that is done: the costly step. Throws std::bad_alloc, and can be tried again;
    // of more than kMostChannels channels it always does.
    void Prepare();

    // Turns input frames into output frames. In: *inFrames on offer, *outFrames of room. Out: *inFrames that
    // count as consumed, the others are to be offered again; *outFrames written. With no frames on offer it
    // feeds the zeros of the tail instead, and `input` may be null. Allocates nothing once it is prepared,
    // which it else sees to itself.
    void Process(const int16_t* input, uint32_t* inFrames, int16_t* output, uint32_t* outFrames);

    // The fewest frames that a call should be offered where the source has them: while the converter warms up
    // as many as its history has room for, so that the audio begins in its place; later 1.
    uint32_t WantedOffer() const { return m_warmup > 0 ? static_cast<uint32_t>(m_warmup + kPast) : 1; }
    // Tells that the next offer has `frames` and is all that the source still has. If Process wouldn't
    // consume them however often they come, 16 to 23 after Configure, it then does, and they come out in
    // their place.
    void EndWith(uint32_t frames);

    // For a reader: the next output frame will be `position`. Returns the input frame to read from.
    int64_t ResetToOutputPosition(int64_t position);

    // For a writer: the next input frame will be `position`. Returns the output frame that belongs to it.
    int64_t ResetToInputPosition(int64_t position);

    // Nothing changes from input to output: the owner goes round the converter.
    bool IsConversionFree() const { return m_srcRate == m_dstRate && m_srcChannels == m_dstChannels; }
    bool IsConfigured() const { return m_phaseCount != 0; }
    uint32_t SourceChannels() const { return m_srcChannels; }
    uint32_t OutputChannels() const { return m_dstChannels; }
    int32_t OutputRate() const { return m_dstRate; }
    int32_t PhaseCount() const { return m_phaseCount; }  // L; 0 before Configure
    int32_t InputStep() const { return m_inputStep; }    // M; 0 before Configure

private:
    static constexpr int32_t kPast = static_cast<int32_t>(PlanarFrames::kPast);

    uint32_t TakeShortWarmup(const int16_t* input, int64_t offered);
    void StretchWarmup(int64_t offered);
    void TakeIn(const int16_t*& input, int64_t frames);
    int64_t EndWarmup(int64_t& batch, int64_t& offered);
    int64_t Produce(int64_t batch, int16_t*& output, uint32_t& room);
    uint32_t FramesWithin(int64_t batch, uint32_t most) const;
    int64_t PlaceOf(int64_t phase) const { return phase * m_inputStep / m_phaseCount; }
    void MakeFrames(int16_t*& output, uint32_t frames);
    size_t MadePlanes() const;
    uint32_t MostAtOnce() const;
    void StandAtStart(int32_t warmup);

    uint32_t m_srcChannels = 2;
    uint32_t m_dstChannels = 2;
    int32_t m_srcRate = 44100;
    int32_t m_dstRate = 44100;
    int32_t m_inputStep = 0;
    int32_t m_phaseCount = 0;
    std::shared_ptr<const PhaseFilter> m_filter;  // null until it is prepared, as what follows is empty
    const ConverterKernel* m_kernel = nullptr;
    const ConverterKernel* m_wantedKernel = nullptr;  // null: the chosen one
    PlanarFrames m_input;
    std::vector<int16_t> m_made;   // planes of output
    std::vector<double> m_totals;  // of the channels that a mean is made of
    int32_t m_phase = 0;           // row of the filter for the next output frame
    int64_t m_readPos = 0;         // read place in the input's rows
    int32_t m_warmup = 0;          // input frames still to come before the next output frame
    bool m_stretches = true;       // a short first offer moves where its frames land
    int32_t m_tail = 0;            // zero frames still to be fed at the end
};
