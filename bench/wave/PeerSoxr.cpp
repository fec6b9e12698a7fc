#include <soxr.h>

#include "bench/wave/ConverterCases.h"

namespace {

Samples ConvertBySoxr(const Samples& input, int sourceRate, int outputRate) {
    Samples output(RoomFor(input.size(), sourceRate, outputRate));
    const soxr_io_spec_t io = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    size_t used = 0;
    size_t made = 0;
    soxr_oneshot(sourceRate, outputRate, 1, input.data(), input.size(), &used, output.data(), output.size(),
                 &made, &io, &quality, nullptr);
    output.resize(made);
    return output;
}

const bool g_registered = RegisterConversion("libsoxr_HQ", ConvertBySoxr);

}  // namespace
