#include <gst/audio/audio.h>

#include "bench/converter/Peer.h"

namespace {

class GstAudio : public Peer {
public:
    GstAudio(const PeerJob& job, unsigned quality) : m_channels(job.channels) {
        static const bool s_ready = (gst_init(nullptr, nullptr), true);
        (void)s_ready;
        GstStructure* options = gst_structure_new_empty("options");
        gst_audio_resampler_options_set_quality(GST_AUDIO_RESAMPLER_METHOD_KAISER, quality, job.from, job.to,
                                                options);
        m_resampler = gst_audio_resampler_new(GST_AUDIO_RESAMPLER_METHOD_KAISER,
                                              GST_AUDIO_RESAMPLER_FLAG_NONE, GST_AUDIO_FORMAT_S16LE,
                                              static_cast<int>(job.channels), job.from, job.to, options);
        gst_structure_free(options);
    }
    ~GstAudio() override {
        if (m_resampler) gst_audio_resampler_free(m_resampler);
    }

    size_t Convert(const Samples& input, Samples& output) override {
        if (!m_resampler) return 0;
        const size_t frames = input.size() / m_channels;
        size_t total = 0;
        for (size_t at = 0; at < frames; at += kPeerBlock) {
            const size_t block = std::min(kPeerBlock, frames - at);
            const size_t made = gst_audio_resampler_get_out_frames(m_resampler, block);
            if (total + made > output.size() / m_channels) return 0;
            gpointer from = const_cast<int16_t*>(&input[at * m_channels]);
            gpointer to = &output[total * m_channels];
            gst_audio_resampler_resample(m_resampler, &from, block, &to, made);
            total += made;
        }
        return total;
    }

private:
    uint32_t m_channels;
    GstAudioResampler* m_resampler = nullptr;
};

const bool g_added = [] {
    for (unsigned quality = 2; quality <= 6; ++quality)
        AddPeer("gst-audio quality " + std::to_string(quality),
                [=](const PeerJob& job) { return std::make_unique<GstAudio>(job, quality); });
    return true;
}();

}  // namespace
