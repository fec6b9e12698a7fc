// By how much a conversion of the sample rate makes more frames, or fewer. Needs the standard library alone,
// so that whoever counts frames beside the module computes the same. N frames of a source become ceil(N L /
// M); in a read of a source of 24 to 47 frames ceil((2 N - 32) L / M).
#pragma once

#include <cstdint>

// A ratio of output to input frames: L output frames for M input frames.
struct ConversionRatio {
    int32_t phaseCount;  // L, 1 to 1002
    int32_t inputStep;   // M, 1 or more
};

// The best L/M near dstRate/srcRate, rates in Hz; 1/1 for rates that give no ratio (0, negative). An exact
// one of small numbers is kept as it is.
ConversionRatio FindConversionRatio(int32_t srcRate, int32_t dstRate);
