#include "capi/audio/MixedFrames.h"

#include <algorithm>

#include "capi/audio/ChannelMix.h"
#include "capi/audio/DownMix.h"

namespace {
constexpr size_t kMixedBlock = 4096;
}

size_t MixedFrames::Read(int16_t* buffer, size_t frames) {
    m_block.resize(kMixedBlock * kSurround);
    const size_t done = m_source.Read(m_block.data(), std::min(frames, kMixedBlock));
    MixToStereo(m_block.data(), done, buffer);
    return done;
}
