// Triangular noise for samples of 16 bits that somebody cuts down to 8 by leaving out the lower half: then
// the error of the cut has no relation to the signal, and no mean. The noise spans two steps of the 8 bits.
//
// Decisions: it comes from SplitMix64 (Steele, Lea, Flood: "Fast splittable pseudorandom number generators",
// OOPSLA 2014), one number a sample, in the order of the samples. So a seed gives the same file anywhere.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

class Dither {
public:
    explicit Dither(uint64_t seed) : m_state(seed) {}

    // Interleaved channels are so many samples.
    void Apply(int16_t* samples, size_t count) {
        std::for_each(samples, samples + count, [this](int16_t& sample) {
            sample = static_cast<int16_t>(std::clamp(sample + Noise(), -32768, 32767));
        });
    }

private:
    // Two even distributions of 256 values make the triangle. Leaving out the lower half loses 127.5 of 256
    // values in the mean, which the first of them gives back; the second's mean goes with a bit more.
    int Noise() {
        const uint64_t random = Next();
        const auto part = [&](int shift, uint64_t mask) { return static_cast<int>(random >> shift & mask); };
        return part(0, 0xFF) + part(8, 0xFF) + part(16, 1) - 128;
    }

    uint64_t Next() {
        m_state += 0x9E3779B97F4A7C15;
        uint64_t mixed = m_state;
        mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
        return mixed ^ mixed >> 31;
    }

    uint64_t m_state;
};
