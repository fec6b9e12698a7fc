#include <cmath>

#include "AudioCodec/wave/converter/CSampleRateConverter.h"
#include "bench/wave/ConverterCases.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kTone = 997.0;  // Hz
constexpr double kAmplitude = 16000.0;
constexpr int kSeconds = 10;

struct RatePair {
    int source, output;
};
constexpr RatePair kRates[] = {{44100, 48000}, {48000, 44100}, {44100, 8000}, {8000, 44100}};

Samples Tone(int rate) {
    Samples samples(static_cast<size_t>(rate) * kSeconds);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<int16_t>(
            std::lround(kAmplitude * std::sin(2 * kPi * kTone * static_cast<double>(i) / rate)));
    return samples;
}

// Least-squares fit of the tone to the middle of the signal; everything else is noise.
double SignalToNoise(const Samples& samples, int rate) {
    const size_t from = samples.size() / 4;
    const size_t to = samples.size() * 3 / 4;
    double ss = 0, cc = 0, sc = 0, xs = 0, xc = 0, xx = 0;
    for (size_t i = from; i < to; ++i) {
        const double angle = 2 * kPi * kTone * static_cast<double>(i) / rate;
        const double s = std::sin(angle);
        const double c = std::cos(angle);
        const double x = samples[i];
        ss += s * s, cc += c * c, sc += s * c, xs += x * s, xc += x * c, xx += x * x;
    }
    const double det = ss * cc - sc * sc;
    const double a = (xs * cc - xc * sc) / det;
    const double b = (xc * ss - xs * sc) / det;
    const double signal = a * xs + b * xc;
    return 10 * std::log10(signal / (xx - signal));
}

Samples ConvertByModule(const Samples& input, int sourceRate, int outputRate) {
    CSampleRateConverter converter;
    converter.Configure(1, sourceRate, 1, outputRate);
    converter.ResetToOutputPosition(0);
    Samples output(RoomFor(input.size(), sourceRate, outputRate));
    size_t at = 0;
    size_t total = 0;
    for (uint32_t made = 1; made != 0;) {
        auto taken = static_cast<uint32_t>(std::min<size_t>(2048, input.size() - at));
        made = static_cast<uint32_t>(output.size() - total);
        converter.Process(input.data() + at, &taken, output.data() + total, &made);
        at += std::min<size_t>(taken, input.size() - at);
        total += made;
    }
    output.resize(total);
    return output;
}

const bool g_registered = RegisterConversion("module", ConvertByModule);

}  // namespace

bool RegisterConversion(const std::string& name, const Conversion& convert) {
    for (const RatePair& rates : kRates) {
        const std::string title =
            "Convert/" + std::to_string(rates.source) + "to" + std::to_string(rates.output) + "/" + name;
        benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State& state) {
            const Samples input = Tone(rates.source);
            Samples output;
            for (auto _ : state) {
                output = convert(input, rates.source, rates.output);
                benchmark::DoNotOptimize(output.data());
            }
            state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(output.size()));
            state.counters["SNR_dB"] = SignalToNoise(output, rates.output);
        })->Unit(benchmark::kMillisecond);
    }
    return true;
}
