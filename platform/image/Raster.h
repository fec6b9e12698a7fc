// The pixels of an image and their format, for the image object on one side and the codecs on the other.
// Knows no file format. Rows run from the top down, each padded to 4 bytes.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/base/Types.h"

enum class PixelFormat : uint8_t { None, Indexed1, Indexed4, Indexed8, Rgb555, Rgb565, Rgb24, Rgb32, Argb32 };

inline constexpr uint32_t kMaxImageSide = 32767;                 // pixels
inline constexpr uint64_t kMaxImagePixels = uint64_t{64} << 20;  // of one image
inline constexpr uint64_t kMaxImageBytes = uint64_t{256} << 20;  // of its pixels
inline constexpr uint32_t kMaxPalette = 256;

constexpr uint32_t PackColor(uint32_t red, uint32_t green, uint32_t blue, uint32_t alpha = 255) {
    return alpha << 24 | red << 16 | green << 8 | blue;
}

struct Raster {
    // Takes memory for a black image. E_FAIL for a size out of bounds, before any memory
    // is taken; E_OUTOFMEMORY.
    HRESULT Allocate(uint32_t rasterWidth, uint32_t rasterHeight, PixelFormat pixelFormat);
    // Gives an indexed format a palette of `count` greys, from black to white.
    void SetGreyPalette(uint32_t count);

    uint8_t* Row(uint32_t y) { return bits.get() + y * pitch; }
    const uint8_t* Row(uint32_t y) const { return bits.get() + y * pitch; }
    // One pixel as 0xAARRGGBB; x and y lie inside.
    uint32_t Color(uint32_t x, uint32_t y) const;
    void SetColor(uint32_t x, uint32_t y, uint32_t color);
    // A whole row as blue, green, red; `row` has room for 3 bytes a pixel.
    void CopyRowAsBgr(uint32_t y, uint8_t* row) const;

    uint32_t BitsPerPixel() const;
    bool IsIndexed() const { return format >= PixelFormat::Indexed1 && format <= PixelFormat::Indexed8; }

    struct HeapFree {
        void operator()(uint8_t* block) const noexcept { std::free(block); }
    };

    PixelFormat format = PixelFormat::None;
    uint32_t width = 0;   // pixels
    uint32_t height = 0;  // pixels
    size_t pitch = 0;     // bytes
    std::unique_ptr<uint8_t[], HeapFree> bits;
    uint32_t paletteSize = 0;            // entries that the source named
    uint32_t palette[kMaxPalette] = {};  // 0xAARRGGBB; opaque black after the size

private:
    uint32_t NearestIndex(uint32_t color) const;
};
