// The one kind of image that there is. Outside the layer it is known by its face alone.
#pragma once

#include "platform/base/Types.h"
#include "platform/image/Image.h"
#include "platform/image/Raster.h"

class ImageObject final : public CImage {
public:
    ImageObject();
    ~ImageObject() override;

    BOOL Create(int32_t width, int32_t height, int32_t bitsPerPixel, DWORD flags) override;
    HRESULT Load(IStream* stream) override;
    HRESULT Save(const WCHAR* path, const GUID* format) override;
    void Destroy() override { m_raster = Raster(); }

    BOOL IsNull() const override { return m_raster.bits == nullptr; }
    int32_t GetWidth() const override { return static_cast<int32_t>(m_raster.width); }
    int32_t GetHeight() const override { return static_cast<int32_t>(m_raster.height); }
    int32_t GetBPP() const override { return static_cast<int32_t>(m_raster.BitsPerPixel()); }
    BOOL HasAlpha() const override { return m_raster.format == PixelFormat::Argb32; }
    int32_t GetPitch() const override { return static_cast<int32_t>(m_raster.pitch); }
    uint8_t* GetBits() override { return m_raster.bits.get(); }

    uint32_t GetPixel(int32_t x, int32_t y) const override;
    BOOL SetPixel(int32_t x, int32_t y, uint32_t color) override;

    int32_t GetPaletteSize() const override { return static_cast<int32_t>(m_raster.paletteSize); }
    BOOL GetPalette(int32_t first, int32_t count, uint32_t* colors) const override;
    BOOL SetPalette(int32_t first, int32_t count, const uint32_t* colors) override;

private:
    Raster m_raster;
};
