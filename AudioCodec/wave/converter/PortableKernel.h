// The definition of the converter's samples, in plain C++: what every other kernel equals.
#pragma once

#include "AudioCodec/wave/converter/ConverterKernel.h"

// A sample is the sum over k = 0 … 31, ascending, from 0.0, of the input, each sample over 32767.0 and held
// to its limit, times row[k], each product and each sum rounded to double; times 32767.0, cut towards 0.
extern const ConverterKernel kPortableKernel;
