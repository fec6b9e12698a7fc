#include "host/commands/ChannelNames.h"

#include <bit>
#include <iterator>

namespace {

// By the bits of the mask, from the lowest.
constexpr const char* kSpeakers[] = {
    "front left",    "front right",          "front center",          "low frequencies",  "back left",
    "back right",    "front left of center", "front right of center", "back center",      "side left",
    "side right",    "top center",           "top front left",        "top front center", "top front right",
    "top back left", "top back center",      "top back right"};

}  // namespace

std::vector<std::string> ChannelNames(const vlw::Format& format) {
    if (format.channels == 1) return {"mono"};
    if (format.channels == 2 && format.channel_mask == 0) return {"left", "right"};
    std::vector<std::string> names;
    const bool known = static_cast<uint32_t>(std::popcount(format.channel_mask)) == format.channels &&
                       format.channel_mask >> std::size(kSpeakers) == 0;
    for (uint32_t bit = 0; known && bit < std::size(kSpeakers); ++bit)
        if (format.channel_mask >> bit & 1) names.emplace_back(kSpeakers[bit]);
    while (names.size() < format.channels) names.push_back("channel " + std::to_string(names.size() + 1));
    return names;
}
