// The least and the most sample of each column of a picture, for a channel whose length isn't known before
// its end. Knows no colours and no axes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class LevelTrack {
public:
    struct Range {
        int16_t least = INT16_MAX, most = INT16_MIN;  // nothing yet

        void Take(int16_t sample);
        void Take(const Range& other);
    };

    explicit LevelTrack(size_t columns);

    // The next `count` samples, each `stride` behind the one before.
    void Add(const int16_t* samples, size_t count, size_t stride);
    // Of column `column` when all that was added is spread over the columns. Neighbours share a cell where
    // there are fewer samples than columns.
    Range Column(size_t column) const;

private:
    void Halve();

    const size_t m_columns;
    // Twice as many as columns, so that none is wider than a column; when they are full, each two become one.
    std::vector<Range> m_cells;
    uint64_t m_cellFrames = 1;  // of each
    uint64_t m_frames = 0;      // added
};
