// Conversion-free writing of a 200 MB file beside plain write(2) of the same blocks, in turn.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>

#include "AudioCodec/wave/CACWriter.h"
#include "platform/com/RefPtr.h"
#include "tests/support/ScopedFile.h"

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr size_t kAudioBytes = 200'000'000;
constexpr uint32_t kFrameBytes = 4;
constexpr uint32_t kStereo16At44100 = 23;
constexpr size_t kHeaderBytes = 44;

double PlainWrite(const std::vector<char>& block) {
    const ScopedFile target;
    const auto start = Clock::now();
    const int file = open(target.Path().c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0666);
    bool whole = write(file, block.data(), kHeaderBytes) == static_cast<ssize_t>(kHeaderBytes);
    for (size_t done = 0; whole && done < kAudioBytes; done += block.size())
        whole = write(file, block.data(), block.size()) == static_cast<ssize_t>(block.size());
    close(file);
    return whole ? Seconds(Clock::now() - start).count() : 0;
}

double ModuleWrite(const std::vector<char>& block) {
    const ScopedFile target;
    const std::u16string path = target.Wide();
    const auto writer = RefPtr<CACWriter>::Retain(new CACWriter);
    writer->SetFormat(2, 44100, 2);
    writer->SelectFormat(kStereo16At44100);
    const auto start = Clock::now();
    Result result = writer->Open(path.c_str(), 0);
    uint32_t accepted = 0;
    for (size_t done = 0; result == RESULT_OK && done < kAudioBytes; done += block.size())
        result = writer->Write(block.data(), static_cast<uint32_t>(block.size() / kFrameBytes), &accepted);
    writer->Close();
    return result == RESULT_OK ? Seconds(Clock::now() - start).count() : 0;
}

void WriteBesidePlainWrite(benchmark::State& state) {
    const std::vector<char> block(static_cast<size_t>(state.range(0)), 'a');
    double plain = 0;
    double module = 0;
    for (auto _ : state) {
        const double plainSeconds = PlainWrite(block);
        const double seconds = ModuleWrite(block);
        if (plainSeconds == 0 || seconds == 0) {
            state.SkipWithError("the disk is full");
            break;
        }
        plain += plainSeconds;
        module += seconds;
        state.SetIterationTime(seconds);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kAudioBytes));
    state.counters["speed_over_plain_write"] = plain / module;
}
BENCHMARK(WriteBesidePlainWrite)
    ->Arg(4096)
    ->Arg(65536)
    ->Arg(1 << 20)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
