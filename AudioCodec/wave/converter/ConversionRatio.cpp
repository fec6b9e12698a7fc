#include "AudioCodec/wave/converter/ConversionRatio.h"

#include <cmath>
#include <limits>

namespace {

constexpr int32_t kLargestPhaseCount = 1002;
constexpr double kMustBeatBy = 0.9999847412109375;  // 1 - 2^-16: a later ratio wins by more than a rounding

}  // namespace

// Every L up to the largest is tried with the M nearest to it. The relative error counts, since it is
// what an hour of audio comes out too long or too short by. An exact ratio of small numbers is kept: none can
// beat an error of 0.
ConversionRatio FindConversionRatio(int32_t srcRate, int32_t dstRate) {
    ConversionRatio ratio{1, 1};
    // An M of 0 has an error of exactly 1, so it is never taken and nothing divides by it later.
    double best = 1.0;
    for (int32_t i = 1; i <= kLargestPhaseCount; ++i) {
        const double x = static_cast<double>(i) * srcRate / dstRate;
        // Written so that a NaN is no candidate either: 0/0 when both rates are 0.
        if (!(x > 0.0 && x < std::numeric_limits<int32_t>::max())) continue;
        // NOLINTNEXTLINE(bugprone-incorrect-roundings): the formula adds and truncates
        const auto k = static_cast<int32_t>(x + 0.5);
        const double error = std::fabs((k - x) / x);
        if (error < best) {
            ratio = {i, k};
            best = error * kMustBeatBy;
            if (best == 0) break;  // nothing is better
        }
    }
    return ratio;
}
