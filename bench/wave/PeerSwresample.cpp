extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

#include "bench/wave/ConverterCases.h"

namespace {

Samples ConvertBySwresample(const Samples& input, int sourceRate, int outputRate) {
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    SwrContext* context = nullptr;
    swr_alloc_set_opts2(&context, &mono, AV_SAMPLE_FMT_S16, outputRate, &mono, AV_SAMPLE_FMT_S16, sourceRate,
                        0, nullptr);
    Samples output(RoomFor(input.size(), sourceRate, outputRate));
    int total = 0;
    if (context && swr_init(context) == 0) {
        const auto* from = reinterpret_cast<const uint8_t*>(input.data());
        auto* to = reinterpret_cast<uint8_t*>(output.data());
        total =
            swr_convert(context, &to, static_cast<int>(output.size()), &from, static_cast<int>(input.size()));
        to = reinterpret_cast<uint8_t*>(output.data() + total);
        total += swr_convert(context, &to, static_cast<int>(output.size()) - total, nullptr, 0);
    }
    swr_free(&context);
    output.resize(static_cast<size_t>(total));
    return output;
}

const bool g_registered = RegisterConversion("libswresample", ConvertBySwresample);

}  // namespace
