// How the history works. Each input channel has a row of 64 values:
//
//   | 0 ......... past ......... 31 | 32 ...... being taken in ...... 63 |
//                                     ^ first input frame not yet reported as consumed, once warmed up
//   The filter's slot 0 meets m_readPos, its centre, slot 16, meets m_readPos + 16.
//
// (1) take in a batch, (2) end the warm-up, (3) produce while there is room, (4) slide the row down by what
// was used. Only 32 values move: what lies after them will be offered again and lands at value 32 anew.
#include "AudioCodec/wave/converter/CSampleRateConverter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "AudioCodec/shell/object/Saturating.h"
#include "AudioCodec/wave/converter/ConverterKernels.h"

namespace {

constexpr int32_t kLargestPhaseCount = 1002;
constexpr int32_t kPast = 32;  // values of a history row in front of what is being taken in
constexpr int32_t kHistoryRow = 64;
constexpr int32_t kReach = 16;      // input frames to each side of the filter's centre
constexpr uint32_t kPlanMost = 64;  // output frames computed in one go
constexpr double kFullScale = 32767.0;
constexpr double kInputLimit = 0.999;
constexpr int32_t kOutputLimit = 32767;
constexpr double kPi = 3.141592653589793;
constexpr double kMustBeatBy = 0.9999847412109375;  // 1 - 2^-16: a later ratio wins by more than a rounding

// sin(pi x) / (pi x), with the angle brought below 2 pi first.
double Sinc(double x) {
    if (x == 0.0) return 1.0;
    const double a = std::fabs(x);
    const double r = a - static_cast<double>(static_cast<int64_t>(a) & ~int64_t{1});
    return std::sin(r * kPi) / (a * kPi);
}

// The Hann window cos^2(pi t / 32) over 32 input frames (J. von Hann; see Harris, "On the use of windows for
// harmonic analysis with the discrete Fourier transform", 1978).
double HannWindow(double t) {
    const double u = t * 0.0625;
    if (std::fabs(u) >= 1.0) return 0.0;
    const double c = std::cos(u * 0.5 * kPi);
    return c * c;
}

// The filter row of phase p, scaled to a sum of 1. `base` is the input frame at or just before output frame
// p.
void BuildPhase(double* row, int64_t phase, int64_t base, int64_t phaseCount, int64_t inputStep,
                double cutoff) {
    double sum = 0.0;
    row[0] = 0.0;
    for (int64_t j = 1; j < static_cast<int64_t>(kTapsPerRow); ++j) {
        const int64_t n = base + j - kReach;
        const double t =
            static_cast<double>(n * phaseCount - phase * inputStep) / static_cast<double>(phaseCount);
        row[j] = HannWindow(t) * Sinc(t * cutoff);
        sum += row[j];
    }
    for (size_t j = 0; j < kTapsPerRow; ++j) row[j] /= sum;
}

int16_t ToSample(double value) {
    const auto sample = static_cast<int32_t>(value * kFullScale);
    return static_cast<int16_t>(std::clamp(sample, -kOutputLimit, kOutputLimit));
}

}  // namespace

CSampleRateConverter::Ratio CSampleRateConverter::FindRatio(int32_t srcRate, int32_t dstRate) {
    Ratio ratio{1, 1};
    double best = 1.0;
    for (int32_t i = 1; i <= kLargestPhaseCount; ++i) {
        const double x = static_cast<double>(i) * srcRate / dstRate;
        // Written so that a NaN is no candidate either.
        if (!(x > 0.0 && x < std::numeric_limits<int32_t>::max())) continue;
        // NOLINTNEXTLINE(bugprone-incorrect-roundings): the formula adds and truncates
        const auto k = static_cast<int32_t>(x + 0.5);
        const double error = std::fabs((k - x) / x);
        if (error < best) {
            ratio = {i, k};
            best = error * kMustBeatBy;
        }
    }
    return ratio;
}

void CSampleRateConverter::Configure(uint32_t srcChannels, int32_t srcRate, uint32_t dstChannels,
                                     int32_t dstRate) {
    const Ratio ratio = FindRatio(srcRate, dstRate);
    const int64_t phaseCount = ratio.phaseCount;
    const int64_t inputStep = ratio.inputStep;
    const double relative = static_cast<double>(dstRate) / srcRate;
    const double cutoff = relative >= 0.0 && relative < 1.0 ? relative : 1.0;  // 1 also for a rate of 0

    std::vector<double> history(size_t{srcChannels} * kHistoryRow);
    std::vector<int32_t> steps(static_cast<size_t>(phaseCount));
    std::vector<double> taps(static_cast<size_t>(phaseCount) * kTapsPerRow);
    int64_t base = 0;
    for (int64_t p = 0; p < phaseCount; ++p) {
        const int64_t step = (p + 1) * inputStep / phaseCount - p * inputStep / phaseCount;
        steps[static_cast<size_t>(p)] = static_cast<int32_t>(step);
        BuildPhase(&taps[static_cast<size_t>(p) * kTapsPerRow], p, base, phaseCount, inputStep, cutoff);
        base += step;
    }

    m_history = std::move(history);
    m_steps = std::move(steps);
    m_taps = std::move(taps);
    m_srcChannels = srcChannels;
    m_dstChannels = dstChannels;
    m_srcRate = srcRate;
    m_dstRate = dstRate;
    m_phaseCount = ratio.phaseCount;
    m_inputStep = ratio.inputStep;
    m_phase = 0;
    m_readPos = 0;
    m_warmup = kReach;
    m_tail = kReach;
}

void CSampleRateConverter::Process(const int16_t* input, uint32_t* inFrames, int16_t* output,
                                   uint32_t* outFrames) {
    uint32_t room = *outFrames;
    int64_t offered = *inFrames;
    *inFrames = 0;
    *outFrames = 0;
    if (!IsConfigured()) return;

    if (offered < m_warmup) return;
    StretchWarmup(offered);
    if (offered == 0) {
        offered = m_tail;
        input = nullptr;
    }
    const bool feedsTail = input == nullptr;
    while (room != 0 && offered != 0) {
        int64_t batch = std::min<int64_t>(offered, m_warmup + kPast);
        TakeIn(input, batch);                                           // (1)
        *inFrames += static_cast<uint32_t>(EndWarmup(batch, offered));  // (2)
        const uint32_t produced = Produce(batch, output, room);         // (3)
        *outFrames += produced;
        room -= produced;
        const int64_t used = SlideHistory(batch);  // (4)
        offered -= used;
        if (feedsTail)
            m_tail -= static_cast<int32_t>(used);
        else
            *inFrames += static_cast<uint32_t>(used);
    }
}

// A short first offer makes the warm-up longer, so that it ends with the offer.
void CSampleRateConverter::StretchWarmup(int64_t offered) {
    const int64_t whole = int64_t{m_warmup} + kPast;
    if (m_warmup > 0 && offered < whole) m_warmup = static_cast<int32_t>(whole - offered);
}

void CSampleRateConverter::TakeIn(const int16_t*& input, int64_t frames) {
    if (m_history.empty()) return;  // a source without channels
    double* place = m_history.data() + kPast - m_warmup;
    for (int64_t i = 0; i < frames; ++i, ++place) {
        for (size_t c = 0; c < m_srcChannels; ++c)
            place[c * kHistoryRow] =
                input ? std::clamp(*input++ / kFullScale, -kInputLimit, kInputLimit) : 0.0;
    }
}

// Returns the input frames that the warm-up has used up for good. Until it is over it uses up none: its
// frames stay in the history, but will be offered again.
int64_t CSampleRateConverter::EndWarmup(int64_t& batch, int64_t& offered) {
    if (m_warmup <= batch) {
        const int64_t used = m_warmup;
        offered -= used;
        batch -= used;
        m_warmup = 0;
        return used;
    }
    offered -= batch;
    m_warmup -= static_cast<int32_t>(batch);
    batch = 0;
    return 0;
}

uint32_t CSampleRateConverter::Produce(int64_t batch, int16_t*& output, uint32_t room) {
    uint32_t produced = 0;
    while (m_readPos < batch && produced < room) {
        PlannedFrame plan[kPlanMost];
        const uint32_t count = Plan(batch, std::min(room - produced, kPlanMost), plan);
        WriteFrames(plan, count, output);
        produced += count;
    }
    return produced;
}

// Moves phase and read place over the next output frames and notes what each of them meets.
uint32_t CSampleRateConverter::Plan(int64_t batch, uint32_t most, PlannedFrame* plan) {
    uint32_t count = 0;
    while (m_readPos < batch && count < most) {
        const auto phase = static_cast<size_t>(m_phase);
        plan[count++] = {static_cast<uint32_t>(m_readPos), &m_taps[phase * kTapsPerRow]};
        m_readPos += m_steps[phase];
        if (++m_phase == m_phaseCount) m_phase = 0;
    }
    return count;
}

void CSampleRateConverter::WriteFrames(const PlannedFrame* plan, uint32_t count, int16_t*& output) const {
    const bool equal = m_srcChannels == m_dstChannels;
    const bool spread = m_srcChannels == 1 && m_dstChannels >= 2;
    const bool average = m_srcChannels >= 2 && m_dstChannels == 1;
    if (!equal && !spread && !average) return;

    double sums[kPlanMost];
    double total[kPlanMost] = {};
    for (uint32_t c = 0; c < m_srcChannels; ++c) {
        DotPortable(&m_history[size_t{c} * kHistoryRow], plan, count, sums);
        for (uint32_t i = 0; i < count; ++i) {
            int16_t* const frame = output + size_t{i} * m_dstChannels;
            if (average)
                total[i] += sums[i];
            else if (spread)
                std::fill_n(frame, m_dstChannels, ToSample(sums[i]));
            else
                frame[c] = ToSample(sums[i]);
        }
    }
    if (average)
        for (uint32_t i = 0; i < count; ++i) output[i] = ToSample(total[i] / m_srcChannels);
    output += size_t{count} * m_dstChannels;
}

int64_t CSampleRateConverter::SlideHistory(int64_t batch) {
    const int64_t used = std::min(batch, m_readPos);
    m_readPos -= used;
    if (used == 0) return 0;
    for (size_t c = 0; c < m_srcChannels; ++c) {
        double* const row = &m_history[c * kHistoryRow];
        std::copy(row + used, row + used + kPast, row);
    }
    return used;
}

void CSampleRateConverter::ClearPast() {
    for (size_t c = 0; c < m_srcChannels && !m_history.empty(); ++c)
        std::fill_n(&m_history[c * kHistoryRow], kPast, 0.0);
}

int64_t CSampleRateConverter::ResetToOutputPosition(int64_t position) {
    if (!IsConfigured()) return 0;
    const int64_t wanted = std::max<int64_t>(position, 0);
    m_readPos = 0;
    m_phase = static_cast<int32_t>(wanted % m_phaseCount);
    int64_t source = Saturating::Mul(m_inputStep, wanted / m_phaseCount);
    for (int32_t p = 0; p < m_phase; ++p) source = Saturating::Add(source, m_steps[static_cast<size_t>(p)]);
    ClearPast();
    m_tail = kReach;
    m_warmup = static_cast<int32_t>(std::min<int64_t>(source, kReach)) + kReach;
    return source - (m_warmup - kReach);
}

int64_t CSampleRateConverter::ResetToInputPosition(int64_t position) {
    if (!IsConfigured()) return 0;
    const int64_t wanted = std::max<int64_t>(position, 0);
    const int64_t cycles = wanted / m_inputStep;
    m_phase = 0;
    m_readPos = wanted % m_inputStep;
    while (m_readPos >= m_steps[static_cast<size_t>(m_phase)])
        m_readPos -= m_steps[static_cast<size_t>(m_phase++)];
    ClearPast();
    m_warmup = kReach;
    m_tail = kReach;
    return Saturating::Add(Saturating::Mul(m_phaseCount, cycles), m_phase);
}
