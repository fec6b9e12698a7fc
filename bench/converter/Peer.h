// A converter of another library: 16-bit interleaved frames in, 16-bit interleaved frames out.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using Samples = std::vector<int16_t>;

struct PeerJob {
    uint32_t channels;
    int from, to;  // frames a second
};

// Set up and fresh; used for one signal.
class Peer {
public:
    virtual ~Peer() = default;
    // Converts all of `input`, a block at a time, the end included, into `output`, which has room for it.
    // Returns the frames made, 0 for a failure.
    virtual size_t Convert(const Samples& input, Samples& output) = 0;
};

// What a library offers in one of its settings; null where it can't do the job.
using PeerMaker = std::function<std::unique_ptr<Peer>(const PeerJob& job)>;
struct PeerSetting {
    std::string name;
    PeerMaker make;
};
// All that were built in.
std::vector<PeerSetting>& PeerSettings();
inline bool AddPeer(const std::string& name, PeerMaker make) {
    PeerSettings().push_back({name, std::move(make)});
    return true;
}

constexpr size_t kPeerBlock = 1024;  // frames at once

// To and from floats, for those that know nothing else.
inline void ToFloats(const int16_t* samples, size_t count, float* floats) {
    for (size_t i = 0; i < count; ++i) floats[i] = static_cast<float>(samples[i]) * (1.0F / 32768.0F);
}
inline void FromFloats(const float* floats, size_t count, int16_t* samples) {
    for (size_t i = 0; i < count; ++i)
        samples[i] = static_cast<int16_t>(std::lrintf(std::clamp(floats[i] * 32768.0F, -32768.0F, 32767.0F)));
}
