// The inner loops of the sample-rate converter, once for each instruction set. The portable kernel is the
// definition: any other gives the same samples. Knows no formats and no state. Plain data and pointers alone,
// since each kernel's file is compiled for processors that others may not be.
#pragma once

#include <cstddef>
#include <cstdint>

#include "AudioCodec/wave/converter/FilterLayout.h"

// Output frames that are to be made of planar input.
struct ConverterJob {
    const FilterLayout* filter;
    // Where slot 0 of the first frame's row meets the first channel. Kernels that work by blocks read samples
    // around those that count, so there must be ConverterKernel::Margin() on both sides, of any value.
    const int16_t* input;
    size_t inputStride;  // samples from channel to channel
    uint32_t channels;   // of the input, 1 or more
    // Where there are samples beyond the limit of the input, from `input` to the same places in two more
    // planes: the samples held to SampleScale::kWholeLimit, and -1, 0 or 1 where they were. Else 0.
    ptrdiff_t held;
    ptrdiff_t excess;
    int32_t peak;     // no sample is larger
    int32_t phase;    // row of the first frame, below the filter's phases
    uint32_t frames;  // of the output
    double* wide;     // room for one channel's input, with the margins, which lie around where it points
    double* totals;   // room for `frames` sums, and 16 more
    bool average;     // one output channel, the mean of all; else as many as the input
    int16_t* output;  // planar
    size_t outputStride;
};

struct ConverterKernel {
    const char* name;
    bool (*isOffered)();  // by this processor
    void (*produce)(const ConverterJob& job);
    // Interleaved to planar. Returns the largest size of a sample, 0 to 32768.
    int32_t (*split)(const int16_t* input, size_t frames, size_t channels, int16_t* rows, size_t stride);
    // Planar to interleaved. With a stride of 0 each channel is the one plane.
    void (*join)(const int16_t* planes, size_t stride, size_t channels, size_t frames, int16_t* output);

    // Samples that are read before the first place that counts and after the last.
    static constexpr size_t Margin(int32_t step, int32_t phases) {
        return kLanes * (static_cast<size_t>(step / phases) + 1) + kTapsPerRow;
    }
};
