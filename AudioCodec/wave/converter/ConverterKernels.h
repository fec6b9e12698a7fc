// The inner loop of the sample-rate converter. The portable kernel is the definition: any other version must
// give the same bits. Knows no channels, no formats and no state.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr size_t kTapsPerRow = 32;

// One output frame that is to be computed: where its filter row starts to meet the history, and the row.
struct PlannedFrame {
    uint32_t historyStart;  // index into a history row
    const double* taps;     // kTapsPerRow values
};

// For each planned frame the sum over k = 0 … 31, ascending, from 0.0, of history[historyStart + k] *
// taps[k], each product and each sum rounded to double. `history` is one channel's row. Lanes of a vector
// version hold planned frames, never taps.
void DotPortable(const double* history, const PlannedFrame* plan, size_t count, double* sums);
