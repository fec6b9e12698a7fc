// What every sample-rate converter of the comparison is asked to do: ten seconds of a 997 Hz sine, 16-bit
// mono, from one rate to another, and how good the result is.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

using Samples = std::vector<int16_t>;
using Conversion = std::function<Samples(const Samples& input, int sourceRate, int outputRate)>;

// Registers one benchmark for each pair of rates: output frames a second, and the signal-to-noise ratio in
// dB. Returns true, so that a peer can register itself from a static initialiser.
bool RegisterConversion(const std::string& name, const Conversion& convert);

// Output frames to make room for, with some to spare.
inline size_t RoomFor(size_t frames, int sourceRate, int outputRate) {
    return static_cast<size_t>(static_cast<double>(frames) * outputRate / sourceRate) + 4096;
}
