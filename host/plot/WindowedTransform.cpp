#include "host/plot/WindowedTransform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

size_t WindowedTransform::SizeFor(uint32_t rate) {
    size_t size = 1024;
    while (size < 4096 && size < rate / 24) size *= 2;
    return size;
}

WindowedTransform::WindowedTransform(size_t size)
    : m_window(size),
      m_powers(size / 2 + 1),
      m_input(FromFftw<FftwReals>(fftwf_alloc_real(size))),
      m_output(FromFftw<FftwComplexes>(fftwf_alloc_complex(Bins()))),
      m_plan(FromFftw<FftwPlan>(
          fftwf_plan_dft_r2c_1d(static_cast<int>(size), m_input.get(), m_output.get(), FFTW_ESTIMATE))) {
    // A sine of amplitude 1 comes to half the sum of the window, which is size / 2.
    const double scale = 4.0 / static_cast<double>(size) / 32768;
    for (size_t i = 0; i < size; ++i)
        m_window[i] =
            static_cast<float>(scale * (0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) /
                                                             static_cast<double>(size))));
}

const float* WindowedTransform::Powers(const float* samples) {
    for (size_t i = 0; i < m_window.size(); ++i) m_input[i] = samples[i] * m_window[i];
    fftwf_execute(m_plan.get());
    for (size_t i = 0; i < m_powers.size(); ++i)
        m_powers[i] = m_output[i][0] * m_output[i][0] + m_output[i][1] * m_output[i][1];
    return m_powers.data();
}
