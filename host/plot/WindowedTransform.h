// The power of each frequency in a short stretch of samples, under the window of Hann (F. J. Harris, "On the
// Use of Windows for Harmonic Analysis with the Discrete Fourier Transform", 1978).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/plot/Fftw.h"

class WindowedTransform {
public:
    // A power of two of frames that lasts about 40 ms: long enough for the pitch of speech, short enough for
    // its syllables.
    static size_t SizeFor(uint32_t rate);

    explicit WindowedTransform(size_t size);

    size_t Size() const { return m_window.size(); }
    // Frequencies from 0 to half the rate.
    size_t Bins() const { return Size() / 2 + 1; }
    // Of Size() samples of 16 bits; a sine of full scale comes to 1. The result holds until the next call.
    const float* Powers(const float* samples);

private:
    std::vector<float> m_window;  // scaled
    std::vector<float> m_powers;
    FftwReals m_input;
    FftwComplexes m_output;
    FftwPlan m_plan;
};
