// The colours of loudness, from almost black over blue, red and orange to almost white.
//
// Each step is as far from the next for the eye as any other: the lightness of CIE L*a*b* (CIE 15:2004) rises
// evenly. It rises all the way, so the order of the colours is seen without telling hues apart, and in print
// without colours.
#pragma once

#include <array>
#include <cstdint>

class ColourMap {
public:
    static constexpr int kSteps = 256;

    ColourMap();

    // 0 to 1 from dark to light; what is outside comes to the ends. 0x00RRGGBB in sRGB.
    uint32_t At(float part) const;

private:
    std::array<uint32_t, kSteps> m_colours{};
};
