#include <speex/speex_resampler.h>

#include "bench/converter/Peer.h"

namespace {

class Speexdsp : public Peer {
public:
    Speexdsp(const PeerJob& job, int quality) : m_channels(job.channels) {
        int error = 0;
        m_state = speex_resampler_init(job.channels, static_cast<uint32_t>(job.from),
                                       static_cast<uint32_t>(job.to), quality, &error);
    }
    ~Speexdsp() override { speex_resampler_destroy(m_state); }

    size_t Convert(const Samples& input, Samples& output) override {
        const size_t frames = input.size() / m_channels;
        const size_t room = output.size() / m_channels;
        size_t total = 0;
        for (size_t at = 0; at < frames;) {
            auto used = static_cast<spx_uint32_t>(std::min(kPeerBlock, frames - at));
            auto made = static_cast<spx_uint32_t>(room - total);
            if (speex_resampler_process_interleaved_int(m_state, &input[at * m_channels], &used,
                                                        &output[total * m_channels], &made) != 0)
                return 0;
            at += used;
            total += made;
        }
        return total;
    }

private:
    uint32_t m_channels;
    SpeexResamplerState* m_state = nullptr;
};

const bool g_added = [] {
    for (int quality = 3; quality <= 8; ++quality)
        AddPeer("speexdsp quality " + std::to_string(quality),
                [=](const PeerJob& job) { return std::make_unique<Speexdsp>(job, quality); });
    return true;
}();

}  // namespace
