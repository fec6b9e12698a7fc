// The kernels beside the portable one. Each stands in a file of its own, compiled for its instruction set;
// call nothing but isOffered of one that the processor doesn't offer.
#pragma once

#include "AudioCodec/wave/converter/ConverterKernel.h"

#if defined(__x86_64__)
extern const ConverterKernel kSse2Kernel;
extern const ConverterKernel kAvx2Kernel;
extern const ConverterKernel kAvx512Kernel;
extern const ConverterKernel kAvx512VnniKernel;
#elif defined(__aarch64__)
extern const ConverterKernel kNeonKernel;
#endif
