// The entry of libvlplot.so.

#include <new>

#include "host/plot/Correlation.h"
#include "host/plot/PlotOfChannels.h"

namespace {

Plot* Make(const PlotShape& shape) noexcept {
    try {
        return new PlotOfChannels(shape);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool CorrelateOrTell(const float* a, size_t countA, const float* b, size_t countB, float* sums) noexcept {
    try {
        Correlate(a, countA, b, countB, sums);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

constexpr PlotFunctions kFunctions = {Make, CorrelateOrTell};

}  // namespace

extern "C" __attribute__((visibility("default"))) const PlotFunctions* VlPlotFunctions() {
    return &kFunctions;
}
