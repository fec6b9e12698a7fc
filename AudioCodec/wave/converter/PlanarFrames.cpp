#include "AudioCodec/wave/converter/PlanarFrames.h"

#include <algorithm>

#include "AudioCodec/wave/converter/SampleScale.h"

namespace {

// Enough that a call's own cost doesn't count, few enough that the rows stay in the first cache.
constexpr size_t kSamples = 4096;
constexpr size_t kLeastFrames = 32;
constexpr size_t kPlanes = 3;

}  // namespace

void PlanarFrames::Reset(uint32_t channels, size_t margin) {
    const size_t fitting = kSamples / std::max<size_t>(channels, 1);
    const size_t capacity = std::max(fitting - fitting % kLeastFrames, kLeastFrames);
    const size_t stride = margin + kPast + capacity + margin;
    std::vector<int16_t> rows(channels * stride * (margin != 0 ? kPlanes : 1));
    m_wide.resize(stride + kLanes);
    m_rows = std::move(rows);
    m_channels = channels;
    m_capacity = capacity;
    m_margin = margin;
    m_stride = stride;
    m_pastPeak = m_peak = 0;
    m_isHeld = false;
}

void PlanarFrames::Release() {
    m_rows = {};
    m_wide = {};
    m_channels = 0;
}

void PlanarFrames::ClearPast() {
    for (size_t c = 0; c < m_channels; ++c) std::fill_n(Row(c), kPast, int16_t{0});
    m_pastPeak = 0;
    m_isHeld = false;
}

void PlanarFrames::TakeIn(const ConverterKernel& kernel, const int16_t* input, size_t at, size_t frames) {
    m_isHeld = false;
    m_peak = 0;
    if (m_channels == 0) return;
    if (input)
        m_peak = kernel.split(input, frames, m_channels, Row(0) + at, m_stride);
    else
        for (size_t c = 0; c < m_channels; ++c) std::fill_n(Row(c) + at, frames, int16_t{0});
    if (at < kPast) m_pastPeak = std::max(m_pastPeak, m_peak);
}

void PlanarFrames::Slide(size_t used) {
    if (used == 0) return;
    for (size_t c = 0; c < m_channels; ++c) {
        int16_t* const row = Row(c);
        std::copy(row + used, row + used + kPast, row);
    }
    m_pastPeak = used < kPast ? std::max(m_pastPeak, m_peak) : m_peak;
    m_isHeld = false;
}

void PlanarFrames::SetInput(ConverterJob& job, size_t place) {
    const int32_t peak = std::max(m_pastPeak, m_peak);
    const bool holds = m_margin != 0 && peak > SampleScale::kWholeLimit;
    if (holds && !m_isHeld) HoldToLimit();
    const auto plane = static_cast<ptrdiff_t>(m_channels * m_stride);
    job.input = Row(0) + place;
    job.inputStride = m_stride;
    job.held = holds ? plane : 0;
    job.excess = holds ? 2 * plane : 0;
    job.peak = peak;
    job.wide = &m_wide[m_margin + place];
}

void PlanarFrames::HoldToLimit() {
    const size_t plane = m_channels * m_stride;
    int16_t* const held = &m_rows[plane];
    int16_t* const excess = held + plane;
    constexpr int16_t kLimit = SampleScale::kWholeLimit;
    for (size_t i = 0; i < plane; ++i) {
        const int16_t sample = m_rows[i];
        held[i] = std::min(std::max<int16_t>(sample, -kLimit), kLimit);
        excess[i] = static_cast<int16_t>((sample > kLimit ? 1 : 0) - (sample < -kLimit ? 1 : 0));
    }
    m_isHeld = true;
}
