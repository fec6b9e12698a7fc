#include <soxr.h>

#include "bench/converter/Peer.h"

namespace {

class Soxr : public Peer {
public:
    Soxr(const PeerJob& job, unsigned long recipe) : m_channels(job.channels) {
        const soxr_io_spec_t io = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
        const soxr_quality_spec_t quality = soxr_quality_spec(recipe, 0);
        m_soxr = soxr_create(job.from, job.to, job.channels, nullptr, &io, &quality, nullptr);
    }
    ~Soxr() override { soxr_delete(m_soxr); }

    size_t Convert(const Samples& input, Samples& output) override {
        const size_t frames = input.size() / m_channels;
        const size_t room = output.size() / m_channels;
        size_t total = 0;
        size_t at = 0;
        for (size_t made = 1; made != 0 || at < frames;) {
            const size_t block = std::min(kPeerBlock, frames - at);
            size_t used = 0;
            const soxr_error_t error = soxr_process(m_soxr, block ? &input[at * m_channels] : nullptr, block,
                                                    &used, &output[total * m_channels], room - total, &made);
            if (error) return 0;
            at += used;
            total += made;
        }
        return total;
    }

private:
    uint32_t m_channels;
    soxr_t m_soxr;
};

const struct {
    const char* name;
    unsigned long recipe;
} kRecipes[] = {{"libsoxr LQ", SOXR_LQ}, {"libsoxr MQ", SOXR_MQ}, {"libsoxr HQ", SOXR_HQ}};

const bool g_added = [] {
    for (const auto& recipe : kRecipes)
        AddPeer(recipe.name, [&](const PeerJob& job) { return std::make_unique<Soxr>(job, recipe.recipe); });
    return true;
}();

}  // namespace
