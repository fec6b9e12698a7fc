#include "host/compare/Comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr size_t kComparedBlock = 16384;

}  // namespace

Comparison::Comparison(vlw::Reader& a, vlw::Reader& b) : m_sums(a.channels()) {
    std::vector<int16_t> blockA(kComparedBlock * m_sums.size()), blockB(blockA.size());
    while (m_endOfA == vlw::Ending::more && m_endOfB == vlw::Ending::more) {
        const vlw::Read fromA = a.read(blockA.data(), kComparedBlock);
        const vlw::Read fromB = b.read(blockB.data(), kComparedBlock);
        Take(blockA.data(), blockB.data(), std::min(fromA.frames, fromB.frames));
        // One that came with more frames goes on, if only for those.
        if (fromA.frames <= fromB.frames) m_endOfA = fromA.ending;
        if (fromB.frames <= fromA.frames) m_endOfB = fromB.ending;
    }
}

void Comparison::Take(const int16_t* a, const int16_t* b, size_t frames) {
    const size_t channels = m_sums.size();
    if (!m_first) {
        const auto differs = std::mismatch(a, a + frames * channels, b).first - a;
        const auto frame = static_cast<size_t>(differs) / channels;
        if (frame < frames) m_first = m_frames + static_cast<int64_t>(frame);
    }
    for (size_t channel = 0; channel < channels; ++channel) {
        int32_t peak = 0;
        uint64_t signal = 0, noise = 0;
        for (size_t i = channel; i < frames * channels; i += channels) {
            const int32_t sample = a[i];
            const int32_t difference = std::abs(sample - b[i]);
            peak = std::max(peak, difference);
            signal += static_cast<uint32_t>(sample * sample);
            noise += static_cast<uint64_t>(difference) * static_cast<uint64_t>(difference);
        }
        Sums& sums = m_sums[channel];
        sums.peak = std::max(sums.peak, peak);
        sums.signal += static_cast<double>(signal);
        sums.noise += static_cast<double>(noise);
    }
    m_frames += static_cast<int64_t>(frames);
}

std::vector<Comparison::Channel> Comparison::Channels() const {
    std::vector<Channel> channels;
    for (const Sums& sums : m_sums) {
        const bool hasRatio = sums.noise > 0 && sums.signal > 0;
        channels.push_back(
            {sums.peak, hasRatio ? std::optional(10 * std::log10(sums.signal / sums.noise)) : std::nullopt});
    }
    return channels;
}
