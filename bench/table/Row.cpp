#include "bench/table/Row.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <vector>

namespace {

constexpr double kSeconds = 1;  // after which a row ends, if it has had its least turns
constexpr size_t kLeastTurns = 3;
constexpr size_t kMostTurns = 101;

void RunRow(benchmark::State& state, double wanted, const std::function<Sides()>& prepare) {
    const Sides sides = prepare();
    if (!sides.peer || !sides.module) {
        state.SkipWithError("left out: the other side isn't installed");
        return;
    }
    std::vector<double> ratios;
    double spent = 0;
    for (auto _ : state) {
        while (ratios.size() < kLeastTurns || (spent < kSeconds && ratios.size() < kMostTurns)) {
            const double peer = sides.peer();
            const double module = sides.module();
            if (peer <= 0 || module <= 0) {
                state.SkipWithError("a side failed");
                return;
            }
            ratios.push_back(peer / module);
            spent += peer + module;
        }
    }
    std::sort(ratios.begin(), ratios.end());
    state.counters["ratio"] = ratios[ratios.size() / 2];
    state.counters["least"] = ratios.front();
    state.counters["most"] = ratios.back();
    state.counters["wanted"] = wanted;
    state.SetLabel(sides.peerName + '\t' + sides.note);
}

}  // namespace

void AddRow(const std::string& work, double wanted, std::function<Sides()> prepare) {
    benchmark::RegisterBenchmark(work.c_str(), [=](benchmark::State& state) {
        RunRow(state, wanted, prepare);
    })->Iterations(1);
}

double Timed(const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    work();
    return now() - start;
}

double ClockTimed(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}
