#include "host/plot/ColourMap.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

struct Colour {
    double red, green, blue;  // of linear light
};

// Lightness 0 to 100, chroma, hue in degrees, by CIE 15:2004 under the white D65, into the primaries of
// IEC 61966-2-1.
Colour FromLab(double lightness, double chroma, double hue) {
    const auto cube = [](double value) {
        constexpr double kBend = 6.0 / 29;
        return value > kBend ? value * value * value : 3 * kBend * kBend * (value - 4.0 / 29);
    };
    const double angle = hue * std::numbers::pi / 180;
    const double middle = (lightness + 16) / 116;
    const double x = 0.95047 * cube(middle + chroma * std::cos(angle) / 500);
    const double y = cube(middle);
    const double z = 1.08883 * cube(middle - chroma * std::sin(angle) / 200);
    return {3.2406 * x - 1.5372 * y - 0.4986 * z, -0.9689 * x + 1.8758 * y + 0.0415 * z,
            0.0557 * x - 0.2040 * y + 1.0570 * z};
}

uint32_t Byte(double light) {
    const double value = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    return static_cast<uint32_t>(std::lround(255 * std::clamp(value, 0.0, 1.0)));
}

}  // namespace

ColourMap::ColourMap() {
    constexpr double kDarkest = 3, kLightest = 97;
    constexpr double kFirstHue = 285, kLastHue = 360 + 100;  // blue, by red, to yellow
    constexpr double kMostChroma = 70;  // the most with which a screen can show all of them
    for (int i = 0; i < kSteps; ++i) {
        const double part = i / (kSteps - 1.0);
        // With the hue this is half a circle, so that chroma and hue change as evenly as lightness.
        const double chroma = kMostChroma * std::sin(std::numbers::pi * part);
        const Colour colour = FromLab(kDarkest + part * (kLightest - kDarkest), chroma,
                                      kFirstHue + part * (kLastHue - kFirstHue));
        m_colours[static_cast<size_t>(i)] =
            Byte(colour.red) << 16 | Byte(colour.green) << 8 | Byte(colour.blue);
    }
}

uint32_t ColourMap::At(float part) const {
    const float step = std::clamp(part, 0.0f, 1.0f) * (kSteps - 1);
    return m_colours[static_cast<size_t>(std::lround(step))];
}
