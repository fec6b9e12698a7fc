// How the history works. Each input channel has a row of 64 values:
//
//   | 0 ......... past ......... 31 | 32 ...... being taken in ...... 63 |
//                                     ^ first input frame not yet reported as consumed, once warmed up
//   The filter's slot 0 meets m_readPos, its centre, slot 16, meets m_readPos + 16.
//
// For each batch: (1) take it in, (2) end the warm-up, (3) produce while there is room, (4) slide the row
// down by what was used. Only 32 values move: what lies after them will be offered again and lands at
// value 32 anew.
//
// The filters are made once, by Configure: (a) the ratio L/M, (b) how far each output frame moves the read
// place, (c) a row of taps for each of the L places that an output frame can have between two input frames.
// That is the polyphase form of interpolating by L, filtering and keeping each M-th value (Crochiere and
// Rabiner, "Multirate Digital Signal Processing", 1983), of which only the values that are kept are computed.
#include "AudioCodec/wave/converter/CSampleRateConverter.h"

#include <algorithm>
#include <cmath>

#include "AudioCodec/shell/object/Saturating.h"
#include "AudioCodec/wave/converter/ConversionRatio.h"
#include "AudioCodec/wave/converter/ConverterKernels.h"

namespace {

constexpr int32_t kHistoryRow = 64;
constexpr int32_t kReach = 16;      // input frames to each side of the filter's centre
constexpr uint32_t kPlanMost = 64;  // output frames computed in one go
constexpr double kFullScale = 32767.0;
constexpr double kInputLimit = 0.999;
constexpr int32_t kOutputLimit = 32767;
constexpr double kPi = 3.141592653589793;

// sin(pi x) / (pi x). The sine repeats every 2, so whole turns are taken off before the factor pi
// rounds the angle.
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

// (c) The filter row of one phase: the Hann-windowed sinc around the output frame, which lies at phase *
// inputStep / phaseCount. `base` is the input frame at or just before it. The distance t is a quotient of two
// whole numbers, so the row of a phase is the same in every cycle.
void BuildPhase(double* row, int64_t phase, int64_t base, int64_t phaseCount, int64_t inputStep,
                double cutoff) {
    double sum = 0.0;
    // Slot 0 is 16 input frames or more away from every output frame, where the window has ended.
    row[0] = 0.0;
    for (int64_t j = 1; j < static_cast<int64_t>(kTapsPerRow); ++j) {
        const int64_t n = base + j - kReach;
        const double t =
            static_cast<double>(n * phaseCount - phase * inputStep) / static_cast<double>(phaseCount);
        row[j] = HannWindow(t) * Sinc(t * cutoff);
        sum += row[j];
    }
    // Without it each phase would have a gain of its own, and a constant input would come out rippled.
    for (size_t j = 0; j < kTapsPerRow; ++j) row[j] /= sum;
}

int16_t ToSample(double value) {
    // Truncated towards 0, not rounded: part of the definition. -32768 never comes out.
    const auto sample = static_cast<int32_t>(value * kFullScale);
    return static_cast<int16_t>(std::clamp(sample, -kOutputLimit, kOutputLimit));
}

}  // namespace

void CSampleRateConverter::Configure(uint32_t srcChannels, int32_t srcRate, uint32_t dstChannels,
                                     int32_t dstRate) {
    const ConversionRatio ratio = FindConversionRatio(srcRate, dstRate);  // (a)
    const int64_t phaseCount = ratio.phaseCount;
    const int64_t inputStep = ratio.inputStep;
    const double relative = static_cast<double>(dstRate) / srcRate;
    const double cutoff = relative >= 0.0 && relative < 1.0 ? relative : 1.0;  // 1 for a source rate of 0

    // All memory first, into locals: when there is too little, the old filter stays whole.
    std::vector<double> history(size_t{srcChannels} * kHistoryRow);
    std::vector<int32_t> steps(static_cast<size_t>(phaseCount));
    std::vector<double> taps(static_cast<size_t>(phaseCount) * kTapsPerRow);
    int64_t base = 0;
    for (int64_t p = 0; p < phaseCount; ++p) {
        // (b) The difference of two floors: L steps add up to exactly M, so nothing drifts however
        // long it runs.
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
    // The first input frame lands at value 16, under the centre of the first output frame. The values in
    // front of it are 0: before the start there is silence.
    m_warmup = kReach;
    m_stretches = true;
    // As many zeros bring the last real frame under the filter's centre.
    m_tail = kReach;
}

void CSampleRateConverter::Process(const int16_t* input, uint32_t* inFrames, int16_t* output,
                                   uint32_t* outFrames) {
    uint32_t room = *outFrames;
    int64_t offered = *inFrames;
    *inFrames = 0;
    *outFrames = 0;
    if (!IsConfigured()) return;

    // Before any input there is no signal, so there are no zeros after one either.
    if (offered == 0 && m_warmup > 0) return;
    if (offered != 0 && offered < m_warmup) {
        if (room != 0) *inFrames = TakeShortWarmup(input, offered);
        return;
    }
    StretchWarmup(offered);
    // The source has ended. What is left of the tail stays in m_tail for the next call.
    if (offered == 0) {
        offered = m_tail;
        input = nullptr;
    }
    const bool feedsTail = input == nullptr;
    while (room != 0 && offered != 0) {
        // No more than fits between value 32 - m_warmup and the end of the row.
        int64_t batch = std::min<int64_t>(offered, m_warmup + kPast);
        TakeIn(input, batch);                                           // (1)
        *inFrames += static_cast<uint32_t>(EndWarmup(batch, offered));  // (2)
        const uint32_t produced = Produce(batch, output, room);         // (3)
        *outFrames += produced;
        room -= produced;
        const int64_t used = SlideHistory(batch);  // (4)
        offered -= used;
        // Zeros of the tail are nobody's input: the caller must not be told that they were consumed.
        if (feedsTail)
            m_tail -= static_cast<int32_t>(used);
        else
            *inFrames += static_cast<uint32_t>(used);
    }
}

// An offer that can't even fill the warm-up is a source that ends here: owners who have more offer it at
// once. Zeros of the tail fill the row up, so that the frames stand where they would in a longer source; the
// rest of the tail brings them under the centre. More zeros than the tail has mean that the place lies after
// the end, where no frame is due.
uint32_t CSampleRateConverter::TakeShortWarmup(const int16_t* input, int64_t offered) {
    TakeIn(input, offered);
    m_warmup -= static_cast<int32_t>(offered);
    const int16_t* silence = nullptr;
    TakeIn(silence, m_warmup);
    m_tail -= std::min(m_warmup, m_tail);
    m_warmup = 0;
    return static_cast<uint32_t>(offered);
}

// A first offer that doesn't fill what the row has room for moves where its frames land: at value offered -
// m_warmup instead of 32 - m_warmup. So after Configure the audio comes late for 33 to 47 frames, the first
// ones are passed over for 24 to 31, and 16 to 23 produce nothing and aren't consumed; owners who mind offer
// WantedOffer() at first. The new warm-up is at most 32, since the offer isn't shorter than the old one:
// nothing lands in front of the row.
void CSampleRateConverter::StretchWarmup(int64_t offered) {
    if (m_warmup > 0 && m_stretches && offered < WantedOffer())
        m_warmup = static_cast<int32_t>(WantedOffer() - offered);
}

void CSampleRateConverter::EndWith(uint32_t frames) {
    const int64_t stretched = int64_t{WantedOffer()} - frames;
    if (m_warmup > 0 && frames < stretched) m_stretches = false;
}

// (1) From value 32 - m_warmup on, so that the last frame of the warm-up stands right in front of value 32.
// Full scale is held back to 0.999, so the loudest sound that lasts comes out as 32734.
void CSampleRateConverter::TakeIn(const int16_t*& input, int64_t frames) {
    if (m_history.empty()) return;  // a source without channels
    double* place = m_history.data() + kPast - m_warmup;
    for (int64_t i = 0; i < frames; ++i, ++place) {
        for (size_t c = 0; c < m_srcChannels; ++c)
            place[c * kHistoryRow] =
                input ? std::clamp(*input++ / kFullScale, -kInputLimit, kInputLimit) : 0.0;
    }
}

// (2) Returns the input frames that the warm-up has used up for good. Until it is over it uses up none: its
// frames stay in the history, but will be offered again. Afterwards value 32 is the first frame that isn't
// reported, which is what the slide keeps true from then on.
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

// (3) As long as the read place lies before the end of the batch, all 32 values that the filter meets are in.
// Planning apart from computing gives the kernel many frames at a time, over one channel's row.
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
    // Other channel counts have no mix: the frames count as made, but nothing is written.
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
    // The mean is taken before it becomes a sample: one truncation, not one for each channel.
    if (average)
        for (uint32_t i = 0; i < count; ++i) output[i] = ToSample(total[i] / m_srcChannels);
    output += size_t{count} * m_dstChannels;
}

// (4) A read place past the batch, as steps of more than one frame make it, keeps its surplus for the next
// one. What was left unread for want of room stays after value 32 and is not counted as used.
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

// After a jump the frames in front are not those that were there: silence, until a warm-up puts others in
// place. What lies from value 32 on is overwritten before it is met.
void CSampleRateConverter::ClearPast() {
    for (size_t c = 0; c < m_srcChannels && !m_history.empty(); ++c)
        std::fill_n(&m_history[c * kHistoryRow], kPast, 0.0);
}

int64_t CSampleRateConverter::ResetToOutputPosition(int64_t position) {
    if (!IsConfigured()) return 0;
    const int64_t wanted = std::max<int64_t>(position, 0);
    m_readPos = 0;
    m_phase = static_cast<int32_t>(wanted % m_phaseCount);
    // Whole cycles of M input frames, then the steps inside the last one: a sum of steps, as a straight read
    // would have made them, so the two meet the same input frame in the same phase.
    int64_t source = Saturating::Mul(m_inputStep, wanted / m_phaseCount);
    for (int32_t p = 0; p < m_phase; ++p) source = Saturating::Add(source, m_steps[static_cast<size_t>(p)]);
    ClearPast();
    m_tail = kReach;
    // The filter meets 16 frames in front of the target too, as far as there are any: they are read again.
    m_warmup = static_cast<int32_t>(std::min<int64_t>(source, kReach)) + kReach;
    m_stretches = true;
    return source - (m_warmup - kReach);
}

int64_t CSampleRateConverter::ResetToInputPosition(int64_t position) {
    if (!IsConfigured()) return 0;
    const int64_t wanted = std::max<int64_t>(position, 0);
    const int64_t cycles = wanted / m_inputStep;
    // The phase whose step contains the input frame. The steps of a cycle add up to M, so this ends inside
    // the table. Rows with a step of 0 in front of it are passed over, at position 0 too: so it is when the
    // output has more frames than the input.
    m_phase = 0;
    m_readPos = wanted % m_inputStep;
    while (m_readPos >= m_steps[static_cast<size_t>(m_phase)])
        m_readPos -= m_steps[static_cast<size_t>(m_phase++)];
    ClearPast();
    // A writer can't read back: in front of the place there is silence, as at the start.
    m_warmup = kReach;
    m_stretches = true;
    m_tail = kReach;
    return Saturating::Add(Saturating::Mul(m_phaseCount, cycles), m_phase);
}
