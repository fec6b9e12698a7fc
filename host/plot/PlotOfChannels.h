// A Plot: two tracks for each channel, and the picture of them. Memory is bounded by the picture's size,
// however long the audio is.
#pragma once

#include <vector>

#include "host/plot/LevelTrack.h"
#include "host/plot/PlotFunctions.h"
#include "host/plot/SpectrumTrack.h"
#include "host/plot/WindowedTransform.h"

class PlotOfChannels final : public Plot {
public:
    // Throws std::bad_alloc.
    explicit PlotOfChannels(const PlotShape& shape);
    virtual ~PlotOfChannels() = default;

    bool Add(const int16_t* frames, size_t count) noexcept override;
    const char* Draw(const PlotTexts& texts, const PlotTarget& target) noexcept override;
    void Delete() noexcept override { delete this; }

private:
    const PlotShape m_shape;
    uint64_t m_frames = 0;
    WindowedTransform m_transform;
    std::vector<LevelTrack> m_levels;
    std::vector<SpectrumTrack> m_spectra;
};
