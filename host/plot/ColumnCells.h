// Which cells of a track a column of the picture shows, when all frames are spread over its columns.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

struct ColumnCells {
    // `frames` of all, at least 1.
    ColumnCells(size_t column, size_t columns, uint64_t frames, uint64_t cellFrames) {
        const uint64_t from = Place(column, columns, frames);
        const uint64_t to = std::max(Place(column + 1, columns, frames), from + 1);
        first = static_cast<size_t>(from / cellFrames);
        end = static_cast<size_t>((to - 1) / cellFrames + 1);
    }

    size_t first, end;  // at least one

private:
    // frames * column / columns, which may not fit.
    static uint64_t Place(size_t column, size_t columns, uint64_t frames) {
        return frames / columns * column + frames % columns * column / columns;
    }
};
