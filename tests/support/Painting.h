// An image to send out and to compare with what comes back.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "platform/base/Types.h"
#include "platform/image/Image.h"

// Soft shapes and a little noise, as a photograph has, in any format that Create knows.
inline void Paint(CImage& image, int32_t width, int32_t height, int32_t bits = 24, DWORD flags = 0) {
    ASSERT_TRUE(image.Create(width, height, bits, flags));
    const int32_t colors = image.GetPaletteSize();
    for (int32_t i = 0; i < colors; ++i) {
        const auto step = static_cast<uint32_t>(i * 255 / (colors - 1));
        const uint32_t color = 0xFF000000 | step << 16 | (255 - step) << 8 | step / 2;
        ASSERT_TRUE(image.SetPalette(i, 1, &color));
    }
    uint32_t noise = 1;
    for (int32_t i = 0; i < width * height; ++i) {
        const int32_t x = i % width;
        const int32_t y = i / width;
        uint32_t color = flags ? static_cast<uint32_t>(x * 4) : 255;  // alpha
        for (const double slope : {.05, .02, .07}) {
            noise = noise * 1664525 + 1013904223;
            color = color << 8 |
                    (static_cast<uint32_t>(120 + 100 * std::sin(x * slope + y * .03)) + (noise >> 29));
        }
        ASSERT_TRUE(image.SetPixel(x, y, color));
    }
}

// The greatest step between two colours in any channel.
inline int Step(uint32_t a, uint32_t b) {
    int greatest = 0;
    for (int shift = 0; shift < 32; shift += 8)
        greatest = std::max(greatest, std::abs(int(a >> shift & 255) - int(b >> shift & 255)));
    return greatest;
}
