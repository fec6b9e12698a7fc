// libvlplot.so, which lies beside libvlwav.so.1, the C library. Loaded once, when it is first asked
// for, and kept.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/plot/PlotFunctions.h"

namespace PlotLibrary {

struct Deleter {
    void operator()(Plot* plot) const noexcept { plot->Delete(); }
};

// Throws a Failure that tells what to install where it can't be loaded.
const PlotFunctions& Functions();
// Throws Failure, std::bad_alloc.
std::unique_ptr<Plot, Deleter> NewPlot(const PlotShape& shape);
// The bytes of the PNG file, by Plot::Draw. Throws Failure, std::bad_alloc.
std::string Draw(Plot& plot, const PlotTexts& texts);

}  // namespace PlotLibrary
