#include "host/plot/SpectrumTrack.h"

#include <algorithm>

#include "host/plot/ColumnCells.h"

namespace {

// A window says nothing about a shorter time than this part of it.
constexpr uint64_t kFinestPart = 32;

void TakeLoudest(float* to, const float* from, size_t count) {
    for (size_t i = 0; i < count; ++i) to[i] = std::max(to[i], from[i]);
}

}  // namespace

SpectrumTrack::SpectrumTrack(WindowedTransform& transform, size_t columns, size_t rows)
    : m_transform(transform),
      m_columns(columns),
      m_rows(rows),
      m_cells(2 * columns * rows),
      m_cellFrames(transform.Size() / kFinestPart),
      m_held(transform.Size() / 2) {  // silence before the first sample, in the middle of its window
    for (size_t row = 0; row <= rows; ++row)
        m_firstBin.push_back(static_cast<uint32_t>(transform.Bins() * row / rows));
}

void SpectrumTrack::Add(const int16_t* samples, size_t count, size_t stride) {
    m_held.reserve(m_held.size() + count);
    for (size_t i = 0; i < count; ++i) m_held.push_back(samples[i * stride]);
    m_frames += count;
    TakeWindows();
}

void SpectrumTrack::Finish() {
    // The last sample gets a window behind it as well.
    m_held.resize(m_held.size() + m_transform.Size());
    TakeWindows();
}

void SpectrumTrack::Column(size_t column, float* powers) const {
    std::fill_n(powers, m_rows, 0.0f);
    const ColumnCells cells(column, m_columns, m_frames, m_cellFrames);
    for (size_t cell = cells.first; cell < cells.end; ++cell)
        TakeLoudest(powers, &m_cells[cell * m_rows], m_rows);
}

// Half a window at most, and as long as there is room, a cell.
uint64_t SpectrumTrack::Step() const { return std::min<uint64_t>(m_cellFrames, m_transform.Size() / 2); }

void SpectrumTrack::TakeWindows() {
    size_t place = 0;
    while (m_held.size() - place >= m_transform.Size() && m_centre < m_frames - 1 + Step()) {
        TakeWindow(&m_held[place]);
        place += static_cast<size_t>(Step());
        m_centre += Step();
    }
    m_held.erase(m_held.begin(), m_held.begin() + static_cast<std::ptrdiff_t>(place));
}

void SpectrumTrack::TakeWindow(const float* samples) {
    const uint64_t centre = std::min(m_centre, m_frames - 1);
    if (centre / m_cellFrames == 2 * m_columns) Halve();
    float* const cell = &m_cells[centre / m_cellFrames * m_rows];
    const float* const powers = m_transform.Powers(samples);
    for (size_t row = 0; row < m_rows; ++row) {
        // Where there are more rows than frequencies, neighbours show the same one.
        const float* const first = powers + m_firstBin[row];
        const float* const end = powers + std::max(m_firstBin[row + 1], m_firstBin[row] + 1);
        for (const float* power = first; power < end; ++power) cell[row] = std::max(cell[row], *power);
    }
}

void SpectrumTrack::Halve() {
    for (size_t i = 0; i < m_columns; ++i)
        for (size_t row = 0; row < m_rows; ++row)
            m_cells[i * m_rows + row] =
                std::max(m_cells[2 * i * m_rows + row], m_cells[(2 * i + 1) * m_rows + row]);
    std::fill(m_cells.begin() + static_cast<std::ptrdiff_t>(m_columns * m_rows), m_cells.end(), 0.0f);
    m_cellFrames *= 2;
}
