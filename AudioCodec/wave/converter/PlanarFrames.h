// What the converter knows of its input: the 32 frames before the place that it stands at, and those that it
// is taking in, a row for each channel, with margins that kernels may read. Knows no filter and no phases.
#pragma once

#include <cstdint>
#include <vector>

#include "AudioCodec/wave/converter/ConverterKernel.h"

class PlanarFrames {
public:
    static constexpr size_t kPast = 32;  // frames of a row in front of what is being taken in

    // Silence, with room for Capacity() frames beside the past, a multiple of 32. Throws std::bad_alloc, and
    // then stays as it was.
    void Reset(uint32_t channels, size_t margin);
    void Release();

    size_t Capacity() const { return m_capacity; }
    void ClearPast();

    // Puts frames, or silence where `input` is null, at place `at` of the rows, 0 being the first of the
    // past. at + frames <= kPast + Capacity().
    void TakeIn(const ConverterKernel& kernel, const int16_t* input, size_t at, size_t frames);
    // Moves the rows so that place `used` becomes place 0, as far as the past reaches.
    void Slide(size_t used);

    bool IsSilent() const { return m_pastPeak == 0 && m_peak == 0; }
    // Fills in where a job meets the rows, whose first row of taps begins at `place`, and room for its
    // doubles.
    void SetInput(ConverterJob& job, size_t place);

private:
    int16_t* Row(size_t channel) { return &m_rows[channel * m_stride + m_margin]; }
    void HoldToLimit();

    size_t m_channels = 0;
    size_t m_capacity = 0;
    size_t m_margin = 0;
    size_t m_stride = 0;          // of a row with its margins
    std::vector<int16_t> m_rows;  // with margins further planes: held to the limit, and where they were
    std::vector<double> m_wide;   // one row
    // The largest size of a sample, or of one that was there lately: of the past, and of what was taken in.
    int32_t m_pastPeak = 0;
    int32_t m_peak = 0;
    bool m_isHeld = false;  // the further planes are those of the first
};
