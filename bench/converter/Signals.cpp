#include "bench/converter/Signals.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTone = 997.0;  // Hz

}  // namespace

Samples MakeSignal(SignalKind kind, uint32_t channels, int rate, int seconds) {
    const double peak = kind == SignalKind::Quiet ? 8 : kind == SignalKind::Clipped ? 50000 : 16000;
    Samples samples(static_cast<size_t>(rate) * static_cast<size_t>(seconds) * channels);
    for (size_t i = 0; i < samples.size(); ++i) {
        const auto t = static_cast<double>(i / channels);
        const double turn = kTone * t / rate + 0.1 * static_cast<double>(i % channels);
        auto value = static_cast<int>(std::lround(peak * std::sin(2 * kPi * turn)));
        if (kind == SignalKind::EightBit) value = (value + 32768) / 256 * 256 - 32768;
        samples[i] = static_cast<int16_t>(std::clamp(value, -32768, 32767));
    }
    return samples;
}

double SignalToNoise(const int16_t* samples, size_t count, int rate) {
    double ss = 0, cc = 0, sc = 0, xs = 0, xc = 0, xx = 0;
    for (size_t i = count / 4; i < count * 3 / 4; ++i) {
        const double angle = 2 * kPi * kTone * static_cast<double>(i) / rate;
        const double s = std::sin(angle);
        const double c = std::cos(angle);
        const double x = samples[i];
        ss += s * s, cc += c * c, sc += s * c, xs += x * s, xc += x * c, xx += x * x;
    }
    // Least squares: the normal equations of a sine and a cosine.
    const double det = ss * cc - sc * sc;
    const double a = (xs * cc - xc * sc) / det;
    const double b = (xc * ss - xs * sc) / det;
    const double signal = a * xs + b * xc;
    return 10 * std::log10(signal / (xx - signal));
}
