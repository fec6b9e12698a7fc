// Which kernel converts: the best that the processor offers, or the one that the environment's
// VLACWAV3_KERNEL names, for tests and measurements.
#pragma once

#include <cstddef>

#include "AudioCodec/wave/converter/ConverterKernel.h"

// Chosen at the first call. A name that is unknown, or that the processor doesn't offer, is told on standard
// error and counts as none.
const ConverterKernel& ChosenKernel();

// All kernels of this architecture, the best first, the portable one last; also those that this processor
// doesn't offer. nullptr past the last.
const ConverterKernel* KernelAt(size_t index);
