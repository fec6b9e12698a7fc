#include "platform/image/Raster.h"

#include <algorithm>
#include <iterator>

#include "riff/ByteOrder.h"

namespace {

constexpr uint32_t kOpaque = 0xFF000000;
constexpr uint32_t kFormatBits[] = {0, 1, 4, 8, 16, 16, 24, 32, 32};  // by PixelFormat
static_assert(std::size(kFormatBits) == size_t{static_cast<uint8_t>(PixelFormat::Argb32)} + 1);

// Pixels as the numbers that they are stored as.
uint32_t LoadPixel(const uint8_t* row, uint32_t x, uint32_t bits) {
    if (bits < 8) {
        const uint32_t place = x * bits;
        return static_cast<uint32_t>(row[place / 8] >> (8 - bits - place % 8)) & ((1u << bits) - 1);
    }
    uint32_t value = 0;
    for (uint32_t i = 0; i < bits / 8; ++i) value |= uint32_t{row[size_t{x} * (bits / 8) + i]} << 8 * i;
    return value;
}

void StorePixel(uint8_t* row, uint32_t x, uint32_t bits, uint32_t value) {
    if (bits < 8) {
        const uint32_t place = x * bits;
        const uint32_t shift = 8 - bits - place % 8;
        const uint32_t mask = ((1u << bits) - 1) << shift;
        uint8_t& byte = row[place / 8];
        byte = static_cast<uint8_t>((byte & ~mask) | value << shift);
        return;
    }
    for (uint32_t i = 0; i < bits / 8; ++i)
        row[size_t{x} * (bits / 8) + i] = static_cast<uint8_t>(value >> 8 * i);
}

// 5 or 6 bits to 8: the highest bits come again below, so that full stays full.
constexpr uint32_t Widen5(uint32_t value) { return (value & 31) << 3 | (value & 31) >> 2; }
constexpr uint32_t Widen6(uint32_t value) { return (value & 63) << 2 | (value & 63) >> 4; }

constexpr uint32_t FromRgb555(uint32_t value) {
    return PackColor(Widen5(value >> 10), Widen5(value >> 5), Widen5(value));
}
constexpr uint32_t FromRgb565(uint32_t value) {
    return PackColor(Widen5(value >> 11), Widen6(value >> 5), Widen5(value));
}
constexpr uint32_t ToRgb555(uint32_t color) {
    return (color >> 9 & 0x7C00) | (color >> 6 & 0x3E0) | (color >> 3 & 0x1F);
}
constexpr uint32_t ToRgb565(uint32_t color) {
    return (color >> 8 & 0xF800) | (color >> 5 & 0x7E0) | (color >> 3 & 0x1F);
}
static_assert(FromRgb555(0x7FFF) == 0xFFFFFFFF && ToRgb555(FromRgb555(0x1234)) == 0x1234);
static_assert(FromRgb565(0xFFFF) == 0xFFFFFFFF && ToRgb565(FromRgb565(0x1234)) == 0x1234);

uint32_t Distance(uint32_t a, uint32_t b) {
    uint32_t sum = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const int step = static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255);
        sum += static_cast<uint32_t>(step * step);
    }
    return sum;
}

}  // namespace

HRESULT Raster::Allocate(uint32_t rasterWidth, uint32_t rasterHeight, PixelFormat pixelFormat) {
    if (rasterWidth - 1 >= kMaxImageSide || rasterHeight - 1 >= kMaxImageSide) return E_FAIL;
    if (uint64_t{rasterWidth} * rasterHeight > kMaxImagePixels) return E_FAIL;
    const uint64_t rowBits = uint64_t{rasterWidth} * kFormatBits[static_cast<uint8_t>(pixelFormat)];
    const uint64_t rowBytes = (rowBits + 31) / 32 * 4;
    if (rowBytes * rasterHeight > kMaxImageBytes) return E_FAIL;
    bits.reset(static_cast<uint8_t*>(std::calloc(rasterHeight, rowBytes)));
    if (!bits) return E_OUTOFMEMORY;
    format = pixelFormat;
    width = rasterWidth;
    height = rasterHeight;
    pitch = rowBytes;
    paletteSize = IsIndexed() ? 1u << BitsPerPixel() : 0;
    std::fill(std::begin(palette), std::end(palette), kOpaque);
    return S_OK;
}

void Raster::SetGreyPalette(uint32_t count) {
    paletteSize = count;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t grey = i * 255 / (count - 1);
        palette[i] = PackColor(grey, grey, grey);
    }
}

uint32_t Raster::BitsPerPixel() const { return kFormatBits[static_cast<uint8_t>(format)]; }

uint32_t Raster::Color(uint32_t x, uint32_t y) const {
    const uint32_t value = LoadPixel(Row(y), x, BitsPerPixel());
    if (IsIndexed()) return palette[value];
    if (format == PixelFormat::Rgb555) return FromRgb555(value);
    if (format == PixelFormat::Rgb565) return FromRgb565(value);
    return format == PixelFormat::Argb32 ? value : value | kOpaque;
}

void Raster::SetColor(uint32_t x, uint32_t y, uint32_t color) {
    const uint32_t value = IsIndexed()                     ? NearestIndex(color)
                           : format == PixelFormat::Rgb555 ? ToRgb555(color)
                           : format == PixelFormat::Rgb565 ? ToRgb565(color)
                                                           : color;
    StorePixel(Row(y), x, BitsPerPixel(), value);
}

void Raster::CopyRowAsBgr(uint32_t y, uint8_t* row) const {
    for (uint32_t x = 0; x < width; ++x) StorePixel(row, x, 24, Color(x, y));
}

uint32_t Raster::NearestIndex(uint32_t color) const {
    const auto* nearest = std::min_element(palette, palette + paletteSize, [&](uint32_t a, uint32_t b) {
        return Distance(a, color) < Distance(b, color);
    });
    return static_cast<uint32_t>(nearest - palette);
}
