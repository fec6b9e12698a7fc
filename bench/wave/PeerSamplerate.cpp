#include <samplerate.h>

#include "bench/wave/ConverterCases.h"

namespace {

Samples ConvertBySamplerate(const Samples& input, int sourceRate, int outputRate) {
    std::vector<float> wide(input.size());
    src_short_to_float_array(input.data(), wide.data(), static_cast<int>(input.size()));
    std::vector<float> made(RoomFor(input.size(), sourceRate, outputRate));
    SRC_DATA job{};
    job.data_in = wide.data();
    job.data_out = made.data();
    job.input_frames = static_cast<long>(input.size());
    job.output_frames = static_cast<long>(made.size());
    job.src_ratio = static_cast<double>(outputRate) / sourceRate;
    src_simple(&job, SRC_SINC_MEDIUM_QUALITY, 1);
    Samples output(static_cast<size_t>(job.output_frames_gen));
    src_float_to_short_array(made.data(), output.data(), static_cast<int>(output.size()));
    return output;
}

const bool g_registered = RegisterConversion("libsamplerate_medium", ConvertBySamplerate);

}  // namespace
