// Conversion-free reading of a 200 MB file beside plain read(2) into the same buffer, block by block in turn.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>

#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "platform/com/RefPtr.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr size_t kAudioBytes = 200'000'000;
constexpr uint32_t kFrameBytes = 4;
constexpr off_t kHeaderBytes = 44;

const ScopedFile& BigFile() {
    static const ScopedFile s_file(
        WavImage().Fmt(1, 2, 44100, 16).Chunk("data", std::string(kAudioBytes, 'a')).Image());
    return s_file;
}

double PlainRead(std::vector<char>& buffer) {
    const int file = open(BigFile().Path().c_str(), O_RDONLY);
    lseek(file, kHeaderBytes,
          SEEK_SET);  // the same bytes as the module reads: an odd place in a page costs too
    const auto start = Clock::now();
    while (read(file, buffer.data(), buffer.size()) > 0) benchmark::DoNotOptimize(buffer.data());
    const double seconds = Seconds(Clock::now() - start).count();
    close(file);
    return seconds;
}

double ModuleRead(std::vector<char>& buffer) {
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    reader->Open(BigFile().Wide().c_str(), OPEN_READ_ONLY);
    const auto start = Clock::now();
    for (uint32_t frames = 1; frames != 0;) {
        reader->Read(buffer.data(), static_cast<uint32_t>(buffer.size() / kFrameBytes), &frames, nullptr);
        benchmark::DoNotOptimize(buffer.data());
    }
    return Seconds(Clock::now() - start).count();
}

void ReadBesidePlainRead(benchmark::State& state) {
    std::vector<char> buffer(static_cast<size_t>(state.range(0)));
    double plain = 0;
    double module = 0;
    for (auto _ : state) {
        plain += PlainRead(buffer);
        const double seconds = ModuleRead(buffer);
        module += seconds;
        state.SetIterationTime(seconds);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kAudioBytes));
    state.counters["speed_over_plain_read"] = plain / module;
}
BENCHMARK(ReadBesidePlainRead)
    ->Arg(4096)
    ->Arg(65536)
    ->Arg(1 << 20)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
