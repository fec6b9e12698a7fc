#include "bench/converter/FastestPeer.h"

#include "bench/converter/Signals.h"
#include "bench/table/Row.h"

namespace {

constexpr double kLeastNoise = 80;  // dB
constexpr int kSeconds = 4;
constexpr int kTries = 5;

Samples RoomFor(const Samples& input, const PeerJob& job) {
    return Samples(static_cast<size_t>(static_cast<double>(input.size()) * job.to / job.from) +
                   16384 * job.channels);
}

double NoiseOf(const PeerSetting& setting, PeerJob job) {
    job.channels = 1;
    const Samples input = MakeSignal(SignalKind::Sine, 1, job.from, kSeconds);
    Samples output = RoomFor(input, job);
    const size_t frames = setting.make(job)->Convert(input, output);
    return frames < 1000 ? 0 : SignalToNoise(output.data(), frames, job.to);
}

}  // namespace

std::vector<PeerSetting>& PeerSettings() {
    static std::vector<PeerSetting> s_settings;
    return s_settings;
}

FastestPeer FindFastestPeer(const PeerJob& job) {
    const Samples input = MakeSignal(SignalKind::Sine, job.channels, job.from, kSeconds);
    Samples output = RoomFor(input, job);
    FastestPeer fastest;
    double least = 0;
    for (const PeerSetting& setting : PeerSettings()) {
        const double noise = NoiseOf(setting, job);
        if (noise < kLeastNoise) continue;
        for (int i = 0; i < kTries; ++i) {
            const std::unique_ptr<Peer> peer = setting.make(job);
            const double seconds = Timed([&] { peer->Convert(input, output); });
            if (fastest.setting.make && seconds >= least) continue;
            least = seconds;
            fastest = {setting, noise};
        }
    }
    return fastest;
}
