#include <zita-resampler/resampler.h>

#include "bench/converter/Peer.h"

namespace {

class Zita : public Peer {
public:
    Zita(const PeerJob& job, unsigned halfLength) : m_channels(job.channels) {
        m_isSetUp = m_resampler.setup(static_cast<unsigned>(job.from), static_cast<unsigned>(job.to),
                                      job.channels, halfLength) == 0;
    }

    size_t Convert(const Samples& input, Samples& output) override {
        if (!m_isSetUp) return 0;
        const size_t frames = input.size() / m_channels;
        std::vector<float> wide(kPeerBlock * m_channels);
        std::vector<float> made(kPeerBlock * m_channels * 8);
        size_t total = 0;
        for (size_t at = 0; at < frames; at += kPeerBlock) {
            const size_t block = std::min(kPeerBlock, frames - at);
            ToFloats(&input[at * m_channels], block * m_channels, wide.data());
            m_resampler.inp_count = static_cast<unsigned>(block);
            m_resampler.inp_data = wide.data();
            m_resampler.out_count = static_cast<unsigned>(made.size() / m_channels);
            m_resampler.out_data = made.data();
            m_resampler.process();
            const size_t count = made.size() / m_channels - m_resampler.out_count;
            FromFloats(made.data(), count * m_channels, &output[total * m_channels]);
            total += count;
        }
        return total;
    }

private:
    uint32_t m_channels;
    bool m_isSetUp = false;
    Resampler m_resampler;
};

const bool g_added = [] {
    for (const unsigned halfLength : {16U, 24U, 32U, 48U})
        AddPeer("zita-resampler half length " + std::to_string(halfLength),
                [=](const PeerJob& job) { return std::make_unique<Zita>(job, halfLength); });
    return true;
}();

}  // namespace
