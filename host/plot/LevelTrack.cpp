#include "host/plot/LevelTrack.h"

#include <algorithm>

#include "host/plot/ColumnCells.h"

void LevelTrack::Range::Take(int16_t sample) {
    least = std::min(least, sample);
    most = std::max(most, sample);
}

void LevelTrack::Range::Take(const Range& other) {
    least = std::min(least, other.least);
    most = std::max(most, other.most);
}

LevelTrack::LevelTrack(size_t columns) : m_columns(columns), m_cells(2 * columns) {}

void LevelTrack::Add(const int16_t* samples, size_t count, size_t stride) {
    while (count > 0) {
        if (m_frames == m_cells.size() * m_cellFrames) Halve();
        Range& cell = m_cells[m_frames / m_cellFrames];
        const auto some =
            static_cast<size_t>(std::min<uint64_t>(count, m_cellFrames - m_frames % m_cellFrames));
        Range range = cell;
        for (size_t i = 0; i < some; ++i) range.Take(samples[i * stride]);
        cell = range;
        samples += some * stride;
        count -= some;
        m_frames += some;
    }
}

LevelTrack::Range LevelTrack::Column(size_t column) const {
    Range range;
    const ColumnCells cells(column, m_columns, m_frames, m_cellFrames);
    for (size_t cell = cells.first; cell < cells.end; ++cell) range.Take(m_cells[cell]);
    return range;
}

void LevelTrack::Halve() {
    for (size_t i = 0; i < m_columns; ++i) {
        Range both = m_cells[2 * i];
        both.Take(m_cells[2 * i + 1]);
        m_cells[i] = both;
    }
    std::fill(m_cells.begin() + static_cast<std::ptrdiff_t>(m_columns), m_cells.end(), Range());
    m_cellFrames *= 2;
}
