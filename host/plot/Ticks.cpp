#include "host/plot/Ticks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr double kMinute = 60;

double DecimalStep(double end, int most) {
    const double least = end / most;
    const double ten = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * ten >= least) return factor * ten;
    return 10 * ten;
}

// Seconds; beyond the last, whole multiples of it.
double ClockStep(double end, int most) {
    constexpr double kSteps[] = {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600};
    const double least = end / most;
    for (const double step : kSteps)
        if (step >= least) return step;
    return std::ceil(least / 3600) * 3600;
}

std::string ClockText(double seconds) {
    const auto whole = static_cast<int64_t>(std::llround(seconds));
    if (whole < 3600) return fmt::format("{}:{:02}", whole / 60, whole % 60);
    return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

template <class Text>
Ticks ByStep(double end, double step, const std::string& unit, const Text& text) {
    Ticks ticks{unit, {}};
    // A rounding error doesn't cost the last one.
    const auto count = static_cast<int>(std::floor(end / step + 1e-9));
    for (int i = 0; i <= count; ++i) ticks.ticks.push_back({i * step / end, text(i * step)});
    return ticks;
}

}  // namespace

Ticks LinearTicks(double end, int most, const std::string& unit) {
    const double step = DecimalStep(end, std::max(most, 1));
    const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
    return ByStep(end, step, unit,
                  [decimals](double value) { return fmt::format("{:.{}f}", value, decimals); });
}

Ticks TimeTicks(double seconds, int most) {
    if (seconds < 0.1) return LinearTicks(seconds * 1000, most, "ms");
    if (seconds < 2 * kMinute) return LinearTicks(seconds, most, "s");
    return ByStep(seconds, ClockStep(seconds, std::max(most, 1)), seconds < 60 * kMinute ? "m:ss" : "h:mm:ss",
                  ClockText);
}
