// The spectrum of each column of a picture, for a channel whose length isn't known before its end. Knows no
// colours and no axes.
//
// Decisions: a column, and a row where several frequencies share it, shows the loudest of what falls into it,
// not the mean: in an hour's picture a click, or a short beep, is then as bright as in that of a second.
// Windows overlap by half at least, so none lies at the edges of all that it falls into.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/plot/WindowedTransform.h"

class SpectrumTrack {
public:
    // `rows`: of the picture, over the frequencies from 0 to half the rate. The transform is borrowed, and
    // may serve many tracks.
    SpectrumTrack(WindowedTransform& transform, size_t columns, size_t rows);

    // The next `count` samples, each `stride` behind the one before.
    void Add(const int16_t* samples, size_t count, size_t stride);
    // After the last sample, before the first Column.
    void Finish();
    // The powers of column `column`, by rows, that of frequency 0 first; 1 is a sine of full scale. `powers`
    // has room for them.
    void Column(size_t column, float* powers) const;

private:
    void TakeWindows();
    void TakeWindow(const float* samples);
    void Halve();
    uint64_t Step() const;

    WindowedTransform& m_transform;
    const size_t m_columns;
    const size_t m_rows;
    std::vector<uint32_t> m_firstBin;  // of each row, and of the one past the last
    // Twice as many as columns, each of m_rows, so that none is wider than a column; when they are full, each
    // two become one.
    std::vector<float> m_cells;
    uint64_t m_cellFrames;      // of each
    uint64_t m_frames = 0;      // added
    uint64_t m_centre = 0;      // of the next window
    std::vector<float> m_held;  // from half a window before m_centre on
};
