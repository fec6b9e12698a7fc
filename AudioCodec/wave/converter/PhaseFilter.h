// The filter of one ratio of rates: L rows of 32 taps (Hann-windowed sinc, 16 input frames to each side), and
// their layout for vectors. Immutable, so any number of converters and threads share one.
#pragma once

#include <vector>

#include "AudioCodec/wave/converter/ConversionRatio.h"
#include "AudioCodec/wave/converter/FilterLayout.h"

class PhaseFilter {
public:
    // Throws std::bad_alloc. `cutoff` is the cut-off frequency over that of the input, at most 1.
    PhaseFilter(const ConversionRatio& ratio, double cutoff);
    PhaseFilter(const PhaseFilter&) = delete;
    PhaseFilter& operator=(const PhaseFilter&) = delete;

    const FilterLayout& Layout() const { return m_layout; }
    size_t Bytes() const;  // of memory

private:
    const double* Row(int32_t phase) const { return &m_rows[static_cast<size_t>(phase) * kTapsPerRow]; }
    bool Split();
    bool SumsFit(int fineBits) const;
    void LayOut();
    void FillLane(size_t first, int32_t frame, int32_t lane);

    ConversionRatio m_ratio;
    FilterLayout m_layout{};  // points into what follows
    std::vector<double> m_rows;
    std::vector<int32_t> m_places;
    std::vector<FilterLayout::Block> m_blocks;
    std::vector<FilterLayout::PairTaps> m_pairs;
    std::vector<FilterLayout::PairTaps> m_excess;
    std::vector<FilterLayout::SlotTaps> m_slots;
};
