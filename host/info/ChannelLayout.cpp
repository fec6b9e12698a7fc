#include "host/info/ChannelLayout.h"

#include <bit>
#include <iterator>

namespace {

struct LayoutRow {
    uint32_t mask;
    const char* name;
};
constexpr LayoutRow kLayouts[] = {
    {0x4, "mono"},  {0x3, "stereo"}, {0xB, "2.1"},           {0x7, "3.0"},   {0x103, "3.0 (back)"},
    {0x107, "4.0"}, {0x33, "quad"},  {0x603, "quad (side)"}, {0xF, "3.1"},   {0x37, "5.0 (back)"},
    {0x607, "5.0"}, {0x10F, "4.1"},  {0x3F, "5.1 (back)"},   {0x60F, "5.1"}, {0x13F, "6.1 (back)"},
    {0x70F, "6.1"}, {0x63F, "7.1"},  {0xFF, "7.1 (wide)"},
};

// By the bits of the mask.
constexpr const char* kSpeakers[] = {"FL", "FR", "FC", "LFE", "BL",  "BR",  "FLC", "FRC", "BC",
                                     "SL", "SR", "TC", "TFL", "TFC", "TFR", "TBL", "TBC", "TBR"};

}  // namespace

std::string ChannelLayout(uint32_t channels, uint32_t mask) {
    // One that names more speakers than there are channels, or fewer, tells nothing.
    if (static_cast<uint32_t>(std::popcount(mask)) != channels) mask = 0;
    if (mask == 0) return channels == 1 ? "mono" : channels == 2 ? "stereo" : "";
    for (const LayoutRow& row : kLayouts)
        if (row.mask == mask) return row.name;
    std::string speakers;
    for (size_t bit = 0; bit < std::size(kSpeakers); ++bit)
        if (mask >> bit & 1) speakers += (speakers.empty() ? "" : " ") + std::string(kSpeakers[bit]);
    return speakers;
}
