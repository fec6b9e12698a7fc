extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

#include "bench/converter/Peer.h"

namespace {

class Swresample : public Peer {
public:
    // Without an inner format all its defaults.
    Swresample(const PeerJob& job, AVSampleFormat inner) : m_channels(job.channels) {
        AVChannelLayout layout;
        av_channel_layout_default(&layout, static_cast<int>(job.channels));
        swr_alloc_set_opts2(&m_context, &layout, AV_SAMPLE_FMT_S16, job.to, &layout, AV_SAMPLE_FMT_S16,
                            job.from, 0, nullptr);
        if (inner != AV_SAMPLE_FMT_NONE) {
            av_opt_set_sample_fmt(m_context, "internal_sample_fmt", inner, 0);
            av_opt_set_int(m_context, "filter_size", 32, 0);
        }
        if (swr_init(m_context) < 0) swr_free(&m_context);
    }
    ~Swresample() override { swr_free(&m_context); }

    // It slows down with large output rooms, so each block has one that it just needs.
    size_t Convert(const Samples& input, Samples& output) override {
        if (!m_context) return 0;
        const size_t frames = input.size() / m_channels;
        size_t total = 0;
        for (size_t at = 0;; at += kPeerBlock) {
            const size_t block = at < frames ? std::min(kPeerBlock, frames - at) : 0;
            const auto* from = reinterpret_cast<const uint8_t*>(&input[block ? at * m_channels : 0]);
            auto* to = reinterpret_cast<uint8_t*>(&output[total * m_channels]);
            const int room = std::min(8 * static_cast<int>(kPeerBlock),
                                      static_cast<int>(output.size() / m_channels - total));
            const int made =
                swr_convert(m_context, &to, room, block ? &from : nullptr, static_cast<int>(block));
            if (made < 0) return 0;
            total += static_cast<size_t>(made);
            if (block == 0 && made == 0) return total;
        }
    }

private:
    uint32_t m_channels;
    SwrContext* m_context = nullptr;
};

const struct {
    const char* name;
    AVSampleFormat inner;
} kSettings[] = {{"libswresample default", AV_SAMPLE_FMT_NONE},
                 {"libswresample 32 taps s16", AV_SAMPLE_FMT_S16P},
                 {"libswresample 32 taps s32", AV_SAMPLE_FMT_S32P},
                 {"libswresample 32 taps float", AV_SAMPLE_FMT_FLTP},
                 {"libswresample 32 taps double", AV_SAMPLE_FMT_DBLP}};

const bool g_added = [] {
    for (const auto& setting : kSettings)
        AddPeer(setting.name,
                [&](const PeerJob& job) { return std::make_unique<Swresample>(job, setting.inner); });
    return true;
}();

}  // namespace
