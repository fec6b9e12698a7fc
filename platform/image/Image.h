// A picture as pixels: made empty, decoded from a stream, encoded into a file. It crosses the border: the
// module gives images that the host deletes, and takes images that stay the host's. Operations are virtual,
// so that a host which links nothing of the module can call them; such a host finds VlCreateImage by dlsym on
// the module's handle. Images must be gone before the module is unloaded. The order is the binary border:
// nothing moves, nothing is added.
//
// Images may be made and deleted on any thread; one thread at a time uses an image.
//
// Decisions: rows run from the top down, and the pitch is positive; a side has at most 32767
// pixels and an image at most 512 MiB; colours are 0xAARRGGBB with 255 for opaque, in palettes too, so that
// an indexed picture keeps its transparency; a failed Load leaves the image as it was.
#pragma once

#include "platform/base/Guid.h"
#include "platform/com/Stream.h"

namespace vlacwav3 {

// Flag of Create: 32 bits with alpha.
inline constexpr uint32_t IMAGE_CREATE_ALPHA = 1;

// Formats of Save.
inline constexpr GUID IMAGE_FORMAT_BMP = MakeGuid("B96B3CAB-0728-11D3-9D7B-0000F81EF32E");
inline constexpr GUID IMAGE_FORMAT_JPEG = MakeGuid("B96B3CAE-0728-11D3-9D7B-0000F81EF32E");
inline constexpr GUID IMAGE_FORMAT_PNG = MakeGuid("B96B3CAF-0728-11D3-9D7B-0000F81EF32E");

class CImage {
public:
    CImage(const CImage&) = delete;
    CImage& operator=(const CImage&) = delete;
    virtual ~CImage() = default;

    // Makes a black image (with alpha: a transparent one) in place of what there was. Bits per pixel are 1,
    // 4, 8 (with a palette of all entries, black), 16 (5 for each colour), 24 or 32. 0 for other numbers,
    // a size out of bounds or too little memory; the image is as it was then.
    virtual int32_t Create(int32_t width, int32_t height, int32_t bitsPerPixel, uint32_t flags) = 0;
    // Decodes JPEG, PNG, GIF (first frame) or BMP from the stream's place on. The stream isn't kept, and
    // where it is left is open. The pixel format is that of the source where the table of GetBPP has it,
    // otherwise 32 bits. PLATFORM_FAILED for bytes that are no whole image or ask for too much,
    // PLATFORM_NULL_POINTER for null, PLATFORM_NO_MEMORY.
    virtual int32_t Load(IStream* stream) = 0;
    // Encodes into the file, which is made or overwritten. Without a format the extension chooses: .jpg,
    // .jpeg, .jpe and .jfif, .png, .bmp, .dib. JPEG has no alpha: colours stay as they stand, at quality 95.
    // PLATFORM_FAILED where there is no image, no such format, or no way to write; a file may be left half
    // written then.
    virtual int32_t Save(const char16_t* path, const GUID* format /*may be null*/) = 0;
    virtual void Destroy() = 0;  // makes the image empty

    virtual int32_t IsNull() const = 0;     // whether it is empty; all numbers are 0 then
    virtual int32_t GetWidth() const = 0;   // pixels
    virtual int32_t GetHeight() const = 0;  // pixels
    // 1, 4, 8: palette index, the first pixel in the highest bits. 16: RGB of 5, 5, 5 or 5, 6, 5 bits. 24:
    // blue, green, red. 32: blue, green, red, then alpha if HasAlpha, else nothing. Words are little-endian.
    virtual int32_t GetBPP() const = 0;
    virtual int32_t HasAlpha() const = 0;  // 32 bits with alpha; palettes have theirs in any case
    virtual int32_t GetPitch() const = 0;  // bytes from one row to the next
    // The top row; null if empty. Lives until Create, Load, Destroy or the end.
    virtual uint8_t* GetBits() = 0;

    virtual uint32_t GetPixel(int32_t x, int32_t y) const = 0;  // 0xAARRGGBB; 0 outside
    // Sets the colour, or the nearest one that the format or the palette has. 0 outside.
    virtual int32_t SetPixel(int32_t x, int32_t y, uint32_t color) = 0;

    virtual int32_t GetPaletteSize() const = 0;  // entries, 1 to 256; 0 without a palette
    // Copies entries out and in; 0 for a range that isn't there.
    virtual int32_t GetPalette(int32_t first, int32_t count, uint32_t* colors /*out*/) const = 0;
    virtual int32_t SetPalette(int32_t first, int32_t count, const uint32_t* colors /*in*/) = 0;

protected:
    CImage() = default;  // VlCreateImage makes one
};

// A new empty image, to be deleted by the caller; null without memory.
extern "C" __attribute__((visibility("default"))) CImage* VlCreateImage();

}  // namespace vlacwav3
