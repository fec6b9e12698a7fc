#include <samplerate.h>

#include "bench/converter/Peer.h"

namespace {

class Samplerate : public Peer {
public:
    Samplerate(const PeerJob& job, int kind)
        : m_channels(job.channels),
          m_ratio(static_cast<double>(job.to) / job.from),
          m_state(src_new(kind, static_cast<int>(job.channels), nullptr)) {}
    ~Samplerate() override { src_delete(m_state); }

    size_t Convert(const Samples& input, Samples& output) override {
        const size_t frames = input.size() / m_channels;
        std::vector<float> wide(kPeerBlock * m_channels);
        std::vector<float> made(kPeerBlock * m_channels * 8);
        size_t total = 0;
        for (size_t at = 0;;) {
            const size_t block = std::min(kPeerBlock, frames - at);
            src_short_to_float_array(input.data() + at * m_channels, wide.data(),
                                     static_cast<int>(block * m_channels));
            SRC_DATA job{};
            job.data_in = wide.data();
            job.data_out = made.data();
            job.input_frames = static_cast<long>(block);
            job.output_frames = static_cast<long>(made.size() / m_channels);
            job.src_ratio = m_ratio;
            job.end_of_input = at + block == frames ? 1 : 0;
            if (src_process(m_state, &job) != 0) return 0;
            const auto count = static_cast<size_t>(job.output_frames_gen);
            src_float_to_short_array(made.data(), &output[total * m_channels],
                                     static_cast<int>(count * m_channels));
            total += count;
            at += static_cast<size_t>(job.input_frames_used);
            if (at == frames && count == 0) return total;
        }
    }

private:
    uint32_t m_channels;
    double m_ratio;
    SRC_STATE* m_state;
};

const bool g_added =
    AddPeer("libsamplerate fastest sinc",
            [](const PeerJob& job) { return std::make_unique<Samplerate>(job, SRC_SINC_FASTEST); }) &&
    AddPeer("libsamplerate medium sinc",
            [](const PeerJob& job) { return std::make_unique<Samplerate>(job, SRC_SINC_MEDIUM_QUALITY); });

}  // namespace
