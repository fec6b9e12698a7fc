#include "AudioCodec/wave/converter/PortableKernel.h"

#include <algorithm>
#include <cstdlib>

#include "AudioCodec/wave/converter/SampleScale.h"

namespace {

double ToValue(int16_t sample) {
    return std::clamp(sample / SampleScale::kFull, -SampleScale::kInputLimit, SampleScale::kInputLimit);
}

int16_t ToSample(double value) {
    // Truncated towards 0, not rounded: part of the definition. -32768 never comes out.
    const auto sample = static_cast<int32_t>(value * SampleScale::kFull);
    return static_cast<int16_t>(std::clamp(sample, -SampleScale::kOutputLimit, SampleScale::kOutputLimit));
}

double Dot(const double* window, const double* row) {
    double sum = 0.0;
    for (size_t k = 0; k < kTapsPerRow; ++k) sum += window[k] * row[k];
    return sum;
}

// Where the row of each frame meets the input, one frame after the other.
class Places {
public:
    explicit Places(const ConverterJob& job) : m_filter(*job.filter), m_phase(job.phase) {}

    int64_t Place() const { return m_place; }
    const double* Row() const { return m_filter.rows + static_cast<size_t>(m_phase) * kTapsPerRow; }
    void Next() {
        // The difference of two floors: L steps add up to exactly M, so nothing drifts however long it runs.
        const int64_t step = m_filter.step;
        m_place += (m_phase + 1) * step / m_filter.phases - m_phase * step / m_filter.phases;
        if (++m_phase == m_filter.phases) m_phase = 0;
    }

private:
    const FilterLayout& m_filter;
    int32_t m_phase;
    int64_t m_place = 0;
};

void Produce(const ConverterJob& job) {
    Places end(job);
    for (uint32_t i = 1; i < job.frames; ++i) end.Next();
    const auto reach = static_cast<size_t>(end.Place()) + kTapsPerRow;
    if (job.average) std::fill_n(job.totals, job.frames, 0.0);
    for (uint32_t c = 0; c < job.channels; ++c) {
        const int16_t* const input = job.input + c * job.inputStride;
        std::transform(input, input + reach, job.wide, ToValue);
        int16_t* const output = job.output + c * job.outputStride;
        Places at(job);
        for (uint32_t i = 0; i < job.frames; ++i, at.Next()) {
            const double sum = Dot(job.wide + at.Place(), at.Row());
            if (job.average)
                job.totals[i] += sum;
            else
                output[i] = ToSample(sum);
        }
    }
    // The mean is taken before it becomes a sample: one truncation, not one for each channel.
    if (job.average)
        for (uint32_t i = 0; i < job.frames; ++i) job.output[i] = ToSample(job.totals[i] / job.channels);
}

int32_t Split(const int16_t* input, size_t frames, size_t channels, int16_t* rows, size_t stride) {
    int32_t peak = 0;
    for (size_t c = 0; c < channels; ++c) {
        int16_t* const row = rows + c * stride;
        for (size_t i = 0; i < frames; ++i) {
            row[i] = input[i * channels + c];
            peak = std::max(peak, std::abs(int32_t{row[i]}));
        }
    }
    return peak;
}

void Join(const int16_t* planes, size_t stride, size_t channels, size_t frames, int16_t* output) {
    for (size_t c = 0; c < channels; ++c)
        for (size_t i = 0; i < frames; ++i) output[i * channels + c] = planes[c * stride + i];
}

}  // namespace

const ConverterKernel kPortableKernel = {"portable", [] { return true; }, Produce, Split, Join};
