#include "host/compare/Alignment.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <vector>

#include "host/plot/PlotLibrary.h"

namespace {

constexpr size_t kAlignedBlock = 16384;
constexpr size_t kStretchSeconds = 3;
constexpr int32_t kSound = 33;  // of the mix: below, it may be the noise of a recorder
constexpr size_t kMostPlaces = 1024;
constexpr float kNearlyBest = 0.999f;
constexpr float kAlike = 0.5f;  // below, noise of the same loudness hides what would be the same
constexpr double kLeastPart =
    0.25;  // of the stretch's loudness, which both have to have: few frames are soon alike
constexpr double kLeastLoudness = 1e-6;  // below this part of all, rounding is as strong as what is there

using Mix = std::vector<int32_t>;

// The mix of up to `frames` frames from a place on, fewer at the end.
Mix ReadMix(vlw::Reader& reader, int64_t from, size_t frames) {
    constexpr size_t kWeights = 8;
    const size_t channels = reader.channels();
    std::vector<int16_t> block(kAlignedBlock * channels);
    Mix mix;
    reader.seek(from);
    for (vlw::Read read{0, vlw::Ending::more}; read && mix.size() < frames;) {
        read = reader.read(block.data(), std::min(kAlignedBlock, frames - mix.size()));
        for (size_t i = 0; i < read.frames; ++i) {
            int32_t sum = 0;
            for (size_t channel = 0; channel < channels; ++channel)
                sum += block[i * channels + channel] * static_cast<int32_t>(channel % kWeights + 1);
            mix.push_back(sum);
        }
    }
    return mix;
}

// 0 where there is none.
int64_t FirstSound(vlw::Reader& reader) {
    for (int64_t from = 0;;) {
        const Mix mix = ReadMix(reader, from, kAlignedBlock);
        const auto sound =
            std::find_if(mix.begin(), mix.end(), [](int32_t sample) { return std::abs(sample) >= kSound; });
        if (sound != mix.end()) return from + (sound - mix.begin());
        if (mix.size() < kAlignedBlock) return 0;
        from += static_cast<int64_t>(kAlignedBlock);
    }
}

// The sum of squares of all samples before each, and before the end.
std::vector<double> LoudnessBefore(const Mix& mix) {
    std::vector<double> sums{0};
    for (const int32_t sample : mix) sums.push_back(sums.back() + static_cast<double>(sample) * sample);
    return sums;
}

// A stretch, and what it is held against: place k of `wide` is a shift of k less the most of them. Frames
// that aren't there are silent.
class Shifts {
public:
    Shifts(Mix stretch, Mix wide, size_t first, size_t end)
        : m_stretch(std::move(stretch)), m_wide(std::move(wide)), m_first(first), m_end(end) {}

    // The places that may be the right one.
    std::vector<size_t> Places() const;
    // How far both are apart, as a part of what they are, where both are there; infinite where neither
    // sounds.
    double Distance(size_t place) const;

private:
    std::vector<float> Likeness() const;

    const Mix m_stretch, m_wide;
    const size_t m_first, m_end;  // of m_wide, between which its frames are there
};

std::vector<float> Shifts::Likeness() const {
    std::vector<float> likeness(m_wide.size() - m_stretch.size() + 1);
    if (!PlotLibrary::Functions().correlate(
            std::vector<float>(m_stretch.begin(), m_stretch.end()).data(), m_stretch.size(),
            std::vector<float>(m_wide.begin(), m_wide.end()).data(), m_wide.size(), likeness.data()))
        throw std::bad_alloc();
    const std::vector<double> a = LoudnessBefore(m_stretch), b = LoudnessBefore(m_wide);
    for (size_t place = 0; place < likeness.size(); ++place) {
        const size_t from = std::max(place, m_first), end = std::min(place + m_stretch.size(), m_end);
        // Of what both have there.
        const double ofA = from < end ? a[end - place] - a[from - place] : 0;
        const double ofB = from < end ? b[end] - b[from] : 0;
        const bool counts = ofA > 0 && ofA >= kLeastPart * a.back() && ofB > kLeastLoudness * b.back();
        likeness[place] = counts ? likeness[place] / static_cast<float>(std::sqrt(ofA) * std::sqrt(ofB)) : 0;
    }
    return likeness;
}

std::vector<size_t> Shifts::Places() const {
    const std::vector<float> likeness = Likeness();
    const float best = *std::max_element(likeness.begin(), likeness.end());
    const float least = std::max(kAlike, kNearlyBest * best);
    std::vector<size_t> places;
    for (size_t place = 0; place < likeness.size(); ++place)
        if (likeness[place] >= least) places.push_back(place);
    if (places.size() > kMostPlaces) {
        std::nth_element(places.begin(), places.begin() + kMostPlaces, places.end(),
                         [&](size_t x, size_t y) { return likeness[x] > likeness[y]; });
        places.resize(kMostPlaces);
    }
    return places;
}

double Shifts::Distance(size_t place) const {
    double apart = 0, all = 0;
    const size_t from = std::max(place, m_first), end = std::min(place + m_stretch.size(), m_end);
    for (size_t i = from; i < end; ++i) {
        const double a = m_stretch[i - place], b = m_wide[i];
        apart += (a - b) * (a - b);
        all += a * a + b * b;
    }
    return all > 0 ? apart / all : std::numeric_limits<double>::infinity();
}

}  // namespace

int64_t FindOffset(vlw::Reader& a, vlw::Reader& b) {
    const size_t most = a.rate();  // a second
    const int64_t from = FirstSound(a);
    Mix stretch = ReadMix(a, from, kStretchSeconds * most);
    // b's frame 0 may stand inside of what is looked through.
    const size_t before = most - static_cast<size_t>(std::min<int64_t>(from, static_cast<int64_t>(most)));
    const size_t frames = stretch.size() + 2 * most;
    Mix wide = ReadMix(b, std::max<int64_t>(0, from - static_cast<int64_t>(most)), frames - before);
    if (stretch.empty() || wide.empty()) return 0;
    wide.insert(wide.begin(), before, 0);
    const size_t end = wide.size();
    wide.resize(frames);

    const Shifts shifts(std::move(stretch), std::move(wide), before, end);
    std::vector<size_t> places = shifts.Places();
    places.push_back(most);  // where nothing is shifted
    const auto distance = [most](size_t place) { return place > most ? place - most : most - place; };
    std::sort(places.begin(), places.end(), [&](size_t x, size_t y) { return distance(x) < distance(y); });
    size_t best = most;
    double nearest = std::numeric_limits<double>::infinity();
    for (const size_t place : places) {
        const double apart = shifts.Distance(place);
        if (apart < nearest) {
            nearest = apart;
            best = place;
        }
        if (apart == 0) break;
    }
    return static_cast<int64_t>(best) - static_cast<int64_t>(most);
}
