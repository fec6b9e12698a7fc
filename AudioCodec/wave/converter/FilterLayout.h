// The rows of a filter laid out for vectors, as plain data, so that the kernels' files, each compiled for an
// instruction set of its own, share no inline function. PhaseFilter makes it and keeps it.
//
// A block has a lane for each of 16 output frames in turn, and each lane's row stands at its own place among
// zeros, so that one pair of input samples serves all lanes.
//
// Whole numbers: a tap c is split into h = round(2^14 c) and l = round(2^b (2^14 c - h)), b 13 or less. With
// 16-bit samples s the sums H of s h and L of s l are exact in 32 bits, in any order, and H + L / 2^b is 2^14
// times the sum of s c, up to what the split leaves out: no more than leftOut for each step of the loudest
// sample. A value that lies farther than that from the next whole number is cut to the same sample as the sum
// in doubles.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr size_t kTapsPerRow = 32;
inline constexpr int32_t kLanes = 16;

struct FilterLayout {
    static constexpr int kCoarseBits = 14;  // of h
    static constexpr int kExcessBits = 16;  // of the taps for what the limit of the input leaves, 0.233 c

    // Two neighbouring taps of each lane.
    struct alignas(64) PairTaps {
        int16_t taps[kLanes][2];
    };
    struct alignas(64) SlotTaps {
        double taps[kLanes];
    };
    struct Block {
        int32_t place;     // input frame of its first slot, slot 1 of its first row; from the cycle's start
        int32_t lanes;     // in use; fewer than 16 in the last block of a cycle
        size_t pairCount;  // slots / 2
        const PairTaps* pairs;   // h and l of each pair in turn
        const PairTaps* excess;  // one for each pair
        const SlotTaps* slots;   // two for each pair
    };

    int32_t phases;      // L
    int32_t step;        // M
    const double* rows;  // L rows of kTapsPerRow; slot 0 is 0
    // The blocks, none for filters that can't have them: where one spreads too far, or a sum could leave 32
    // bits.
    size_t blockCount;
    const Block* blocks;
    int32_t cyclePhases;    // output frames of all blocks: a whole number of cycles of L
    int32_t cycleStep;      // and the input frames that they move by
    const int32_t* places;  // of each output frame of a cycle the input frame at or just before it
    int fineBits;           // b
    double leftOut;         // in units of 2^-14
    bool mostlyCertain;     // the whole numbers are faster than the doubles
};
