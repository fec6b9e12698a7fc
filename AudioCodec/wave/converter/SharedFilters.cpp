#include "AudioCodec/wave/converter/SharedFilters.h"

#include <algorithm>
#include <array>
#include <mutex>

namespace {

constexpr size_t kKept = 8;
constexpr size_t kMostBytes = size_t{2} << 20;  // of one that is kept; most have less than a tenth of it

struct Kept {
    ConversionRatio ratio{};
    double cutoff = 0.0;
    std::shared_ptr<const PhaseFilter> filter;  // null where there is none yet
};
std::mutex g_lock;
std::array<Kept, kKept> g_kept;  // the one that was asked for last is the first

// Also puts it in front.
std::shared_ptr<const PhaseFilter> FindKept(const ConversionRatio& ratio, double cutoff) {
    const auto found = std::find_if(g_kept.begin(), g_kept.end(), [&](const Kept& kept) {
        return kept.filter && kept.ratio.phaseCount == ratio.phaseCount &&
               kept.ratio.inputStep == ratio.inputStep && kept.cutoff == cutoff;
    });
    if (found == g_kept.end()) return nullptr;
    std::rotate(g_kept.begin(), found, found + 1);
    return g_kept.front().filter;
}

}  // namespace

std::shared_ptr<const PhaseFilter> SharedFilter(const ConversionRatio& ratio, double cutoff) {
    {
        const std::lock_guard guard(g_lock);
        if (auto kept = FindKept(ratio, cutoff)) return kept;
    }
    // Outside the lock, so that nobody waits for a filter of other rates. Two threads may build the same one.
    auto filter = std::make_shared<const PhaseFilter>(ratio, cutoff);
    if (filter->Bytes() > kMostBytes) return filter;
    std::shared_ptr<const PhaseFilter> dropped;  // lives until the lock is free
    const std::lock_guard guard(g_lock);
    if (auto kept = FindKept(ratio, cutoff)) return kept;
    std::rotate(g_kept.begin(), g_kept.end() - 1, g_kept.end());
    dropped = std::move(g_kept.front().filter);
    g_kept.front() = {ratio, cutoff, filter};
    return filter;
}
