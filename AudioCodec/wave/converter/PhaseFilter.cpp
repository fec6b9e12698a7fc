// (a) The rows, by their definition. (b) The rows laid out in blocks of 16 output frames. (c) Each tap of a
// block split into whole numbers, with the bound of what is left out.
//
// The polyphase form of interpolating by L, filtering and keeping each M-th value (Crochiere and Rabiner,
// "Multirate Digital Signal Processing", 1983), of which only the values that are kept are computed.
#include "AudioCodec/wave/converter/PhaseFilter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "AudioCodec/wave/converter/SampleScale.h"

namespace {

constexpr int32_t kFilterReach = 16;  // input frames to each side of the filter's centre
constexpr double kPi = 3.141592653589793;
constexpr int32_t kMostSpread = 32;  // input frames to one output frame, in a filter with blocks
constexpr int32_t kMostCycle = 512;  // output frames that short cycles are repeated to
constexpr int32_t kMostWaste = 32;   // one unused lane in so many
constexpr int kMostFineBits = 13;
constexpr int kLeastFineBits = 8;    // with fewer too much would be uncertain
constexpr int32_t kMostCopies = 16;  // with more than one such row in so many, the doubles are faster
constexpr int32_t kLiveTaps = 31;
constexpr double kImpulse = 0x1p-40;  // a row with less than this beside its centre copies its input
constexpr double kSumLimit = 0x1p31;

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

int64_t PlaceOf(int64_t frame, const ConversionRatio& ratio) {
    return frame * ratio.inputStep / ratio.phaseCount;
}

// (a) The row of one phase: the Hann-windowed sinc around the output frame, which lies at phase * M / L. The
// distance t is a quotient of two whole numbers, so the row of a phase is the same in every cycle.
void BuildRow(double* row, int64_t phase, const ConversionRatio& ratio, double cutoff) {
    const int64_t place = PlaceOf(phase, ratio);
    double sum = 0.0;
    // Slot 0 is 16 input frames or more away from every output frame, where the window has ended.
    row[0] = 0.0;
    for (int64_t j = 1; j < static_cast<int64_t>(kTapsPerRow); ++j) {
        const int64_t n = place + j - kFilterReach;
        const double t = static_cast<double>(n * ratio.phaseCount - phase * ratio.inputStep) /
                         static_cast<double>(ratio.phaseCount);
        row[j] = HannWindow(t) * Sinc(t * cutoff);
        sum += row[j];
    }
    // Without it each phase would have a gain of its own, and a constant input would come out rippled.
    for (size_t j = 0; j < kTapsPerRow; ++j) row[j] /= sum;
}

struct SplitTap {
    double coarse, fine, excess;
};
SplitTap SplitOf(double tap, int fineBits) {
    const double scaled = std::ldexp(tap, FilterLayout::kCoarseBits);
    const double coarse = std::nearbyint(scaled);
    return {coarse, std::nearbyint(std::ldexp(scaled - coarse, fineBits)),
            std::nearbyint(std::ldexp(SampleScale::kExcess * tap, FilterLayout::kExcessBits))};
}

// What the split of a row leaves out of a sum, at the most and in units of 2^-14, for each step of the
// loudest sample: the true sum of s c and the one in whole numbers, H + L / 2^b, differ by the sum of s (c -
// (h + l / 2^b) / 2^14), so by no more than max |s| * sum |2^14 c - h - l / 2^b| units. Scaling by powers of
// two is exact, and so is 2^14 c - h: both lie on the grid of c's last bit, and the difference is smaller.
// The rest is rounded 32 times, by 2^-53 of less than a unit each, which kRoundings is more than.
double LeftOut(const double* row, int fineBits) {
    constexpr double kRoundings = 1e-12;
    double left = 0.0;
    for (size_t j = 0; j < kTapsPerRow; ++j) {
        const SplitTap tap = SplitOf(row[j], fineBits);
        const double fine = std::ldexp(row[j], FilterLayout::kCoarseBits) - tap.coarse;
        left += std::fabs(fine - std::ldexp(tap.fine, -fineBits));
    }
    return left + kRoundings;
}

bool CopiesItsInput(const double* row) {
    double beside = 0.0;
    for (size_t j = 0; j < kTapsPerRow; ++j) beside += j == kFilterReach ? 0.0 : std::fabs(row[j]);
    return beside < kImpulse;
}

}  // namespace

PhaseFilter::PhaseFilter(const ConversionRatio& ratio, double cutoff)
    : m_ratio(ratio), m_rows(static_cast<size_t>(ratio.phaseCount) * kTapsPerRow) {
    for (int32_t p = 0; p < ratio.phaseCount; ++p)
        BuildRow(&m_rows[static_cast<size_t>(p) * kTapsPerRow], p, ratio, cutoff);
    m_layout.phases = ratio.phaseCount;
    m_layout.step = ratio.inputStep;
    m_layout.rows = m_rows.data();
    if (ratio.inputStep / ratio.phaseCount < kMostSpread && Split()) LayOut();
}

// (c) As many fine bits as fit, so that as few sums as possible are uncertain.
bool PhaseFilter::Split() {
    m_layout.fineBits = kMostFineBits;
    while (m_layout.fineBits >= kLeastFineBits && !SumsFit(m_layout.fineBits)) --m_layout.fineBits;
    int32_t copies = 0;
    m_layout.leftOut = 0.0;
    for (int32_t p = 0; p < m_layout.phases; ++p)
        m_layout.leftOut = std::max(m_layout.leftOut, LeftOut(Row(p), m_layout.fineBits));
    for (int32_t p = 0; p < m_layout.phases; ++p) copies += CopiesItsInput(Row(p)) ? 1 : 0;
    m_layout.mostlyCertain = copies * kMostCopies <= m_layout.phases;
    return m_layout.fineBits >= kLeastFineBits;
}

// Neither the sum of the coarse parts, with that of the fine ones beside it, nor that of the fine ones, with
// what the limit of the input leaves beside it, leaves 32 bits.
bool PhaseFilter::SumsFit(int fineBits) const {
    for (int32_t p = 0; p < m_layout.phases; ++p) {
        double coarse = 0.0;
        double fine = 0.0;
        double excess = 0.0;
        for (size_t j = 0; j < kTapsPerRow; ++j) {
            const SplitTap tap = SplitOf(Row(p)[j], fineBits);
            if (!(std::fabs(tap.coarse) <= INT16_MAX)) return false;
            coarse += std::fabs(tap.coarse);
            fine += std::fabs(tap.fine);
            excess += std::fabs(tap.excess);
        }
        const double finest =
            SampleScale::kWholeLimit * fine +
            std::ldexp(excess, FilterLayout::kCoarseBits + fineBits - FilterLayout::kExcessBits);
        if (!(finest < kSumLimit)) return false;
        if (!(SampleScale::kWholeLimit * coarse + std::ldexp(finest, -fineBits) + 1 < kSumLimit))
            return false;
    }
    return true;
}

// (b)
void PhaseFilter::LayOut() {
    int32_t repeats = (kLanes + m_layout.phases - 1) / m_layout.phases;
    const auto unused = [&] { return (kLanes - repeats * m_layout.phases % kLanes) % kLanes; };
    while (unused() * kMostWaste > repeats * m_layout.phases && (repeats + 1) * m_layout.phases <= kMostCycle)
        ++repeats;
    m_layout.cyclePhases = repeats * m_layout.phases;
    m_layout.cycleStep = repeats * m_layout.step;
    m_places.resize(static_cast<size_t>(m_layout.cyclePhases));
    for (size_t frame = 0; frame < m_places.size(); ++frame)
        m_places[frame] = static_cast<int32_t>(PlaceOf(static_cast<int64_t>(frame), m_ratio));

    std::vector<size_t> firsts;
    size_t pairs = 0;
    for (int32_t frame = 0; frame < m_layout.cyclePhases; frame += kLanes) {
        const int32_t lanes = std::min(kLanes, m_layout.cyclePhases - frame);
        const int32_t first = m_places[static_cast<size_t>(frame)];
        const int32_t slots = m_places[static_cast<size_t>(frame + lanes - 1)] - first + kLiveTaps;
        const auto count = static_cast<size_t>(slots + 1) / 2;
        m_blocks.push_back({first + 1, lanes, count, nullptr, nullptr, nullptr});
        firsts.push_back(pairs);
        pairs += count;
    }
    m_pairs.resize(2 * pairs);
    m_excess.resize(pairs);
    m_slots.resize(2 * pairs);
    for (size_t b = 0; b < m_blocks.size(); ++b) {
        FilterLayout::Block& block = m_blocks[b];
        block.pairs = &m_pairs[2 * firsts[b]];
        block.excess = &m_excess[firsts[b]];
        block.slots = &m_slots[2 * firsts[b]];
        for (int32_t lane = 0; lane < block.lanes; ++lane)
            FillLane(firsts[b], static_cast<int32_t>(b) * kLanes + lane, lane);
    }
    m_layout.blockCount = m_blocks.size();
    m_layout.blocks = m_blocks.data();
    m_layout.places = m_places.data();
}

// `first` is the index of the block's first pair.
void PhaseFilter::FillLane(size_t first, int32_t frame, int32_t lane) {
    const double* const row = Row(frame % m_layout.phases);
    const auto shift = static_cast<size_t>(m_places[static_cast<size_t>(frame)] -
                                           m_places[static_cast<size_t>(frame - lane)]);
    for (size_t j = 1; j < kTapsPerRow; ++j) {
        const size_t slot = shift + j - 1;
        const size_t pair = first + slot / 2;
        const SplitTap tap = SplitOf(row[j], m_layout.fineBits);
        m_pairs[2 * pair].taps[lane][slot % 2] = static_cast<int16_t>(tap.coarse);
        m_pairs[2 * pair + 1].taps[lane][slot % 2] = static_cast<int16_t>(tap.fine);
        m_excess[pair].taps[lane][slot % 2] = static_cast<int16_t>(tap.excess);
        m_slots[2 * first + slot].taps[lane] = row[j];
    }
}

size_t PhaseFilter::Bytes() const {
    const auto bytes = [](const auto& table) { return table.size() * sizeof(table[0]); };
    return bytes(m_rows) + bytes(m_places) + bytes(m_blocks) + bytes(m_pairs) + bytes(m_excess) +
           bytes(m_slots);
}
