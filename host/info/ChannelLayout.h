// What a channel mask of the WAV format says, in words.
#pragma once

#include <cstdint>
#include <string>

// "stereo", "5.1", or the speakers of a mask that has no name: "FL FC LFE". One channel without a mask is
// mono, two are stereo; of more that tell no speakers it is empty.
std::string ChannelLayout(uint32_t channels, uint32_t mask);
