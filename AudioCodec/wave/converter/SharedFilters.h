// The filters that the process has built lately, so that many files of the same rates build one. Safe from
// any thread.
#pragma once

#include <memory>

#include "AudioCodec/wave/converter/PhaseFilter.h"

// The filter of a ratio and a cut-off, as PhaseFilter takes them; built unless one of the last few is it.
// Throws std::bad_alloc.
std::shared_ptr<const PhaseFilter> SharedFilter(const ConversionRatio& ratio, double cutoff);
