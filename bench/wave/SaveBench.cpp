// Saving tags into a 500 MB file beside the same save into one of 1 MB, in turn. The files are sparse: a save
// meets no audio. Most of the time is the medium's, which a save waits for twice.
#include <benchmark/benchmark.h>

#include <chrono>

#include "AudioCodec/wave/riff/CWaveFile.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr uint32_t kBigAudioBytes = 500'000'000;
constexpr uint32_t kSmallAudioBytes = 1'000'000;
constexpr uint32_t kTitle = 0x4D414E49;  // "INAM"

void MakeSparse(const ScopedFile& file, uint32_t audioBytes) {
    const WavImage header = WavImage().Fmt(1, 2, 44100, 16).Header("data", audioBytes);
    file.Write(header.Image());
    std::filesystem::resize_file(file.Path(), header.Image().size() + audioBytes);
}

double Save(const ScopedFile& file, const std::string& title) {
    const std::u16string path = file.Wide();
    const auto start = Clock::now();
    CWaveFile wave;
    wave.OpenForReading(path.c_str(), false);
    wave.Chunks().Set(kTitle, title);
    wave.SetModified(true);
    wave.CloseFile();
    return Seconds(Clock::now() - start).count();
}

void SaveBesideASmallFile(benchmark::State& state) {
    const ScopedFile big;
    const ScopedFile small;
    MakeSparse(big, kBigAudioBytes);
    MakeSparse(small, kSmallAudioBytes);
    double bigSeconds = 0;
    double smallSeconds = 0;
    size_t length = 0;
    for (auto _ : state) {
        const std::string title(100 + 20 * (length++ % 7), 't');  // longer lists and shorter ones
        smallSeconds += Save(small, title);
        const double seconds = Save(big, title);
        bigSeconds += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["time_over_small_file"] = bigSeconds / smallSeconds;
}
BENCHMARK(SaveBesideASmallFile)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
