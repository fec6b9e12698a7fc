// GIF through giflib: the first frame, laid on a screen of the file's size.
#include <gif_lib.h>

#include <algorithm>
#include <memory>

#include "platform/image/ImageCodecs.h"

namespace {

struct GifCloser {
    void operator()(GifFileType* gif) const noexcept {
        int ignored = 0;
        DGifCloseFile(gif, &ignored);
    }
};
using GifPtr = std::unique_ptr<GifFileType, GifCloser>;

// Where the file has ended, no block follows: a missing end mark takes no pixels away. giflib refuses an
// empty block where it still needs pixels.
int ReadBytes(GifFileType* gif, GifByteType* bytes, int size) {
    auto* source = static_cast<ImageSource*>(gif->UserData);
    const size_t count = source->Read(bytes, static_cast<size_t>(size));
    if (count != 0 || size != 1) return static_cast<int>(count);
    *bytes = 0;
    return 1;
}

// Reads one extension with all its blocks; one of graphics control changes `control`.
bool ReadExtension(GifFileType* gif, GraphicsControlBlock& control) {
    int code = 0;
    GifByteType* block = nullptr;  // its length, then its bytes
    if (DGifGetExtension(gif, &code, &block) != GIF_OK) return false;
    if (block && code == GRAPHICS_EXT_FUNC_CODE) DGifExtensionToGCB(block[0], block + 1, &control);
    while (block)
        if (DGifGetExtensionNext(gif, &block) != GIF_OK) return false;
    return true;
}

// Goes to the first frame.
bool FindFrame(GifFileType* gif, GraphicsControlBlock& control) {
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    while (DGifGetRecordType(gif, &type) == GIF_OK) {
        if (type == IMAGE_DESC_RECORD_TYPE) return DGifGetImageDesc(gif) == GIF_OK;
        if (type != EXTENSION_RECORD_TYPE || !ReadExtension(gif, control)) return false;
    }
    return false;
}

bool FitsScreen(const GifFileType& gif) {
    const GifImageDesc& frame = gif.Image;
    return frame.Width > 0 && frame.Height > 0 && frame.Left >= 0 && frame.Top >= 0 &&
           frame.Left + frame.Width <= gif.SWidth && frame.Top + frame.Height <= gif.SHeight;
}

// What the frame leaves free is transparent if it can be, else of the background's colour. A new raster is
// all 0, and memory that nothing is written to isn't taken.
void FillScreen(const GifFileType& gif, int transparent, Raster& raster) {
    const int fill = transparent != NO_TRANSPARENT_COLOR ? transparent : gif.SBackGroundColor;
    const bool isCovered = gif.Image.Width == gif.SWidth && gif.Image.Height == gif.SHeight;
    if (fill == 0 || isCovered) return;
    std::fill_n(raster.bits.get(), raster.pitch * raster.height, static_cast<uint8_t>(fill));
}

void TakePalette(const ColorMapObject& colors, int transparent, Raster& raster) {
    raster.paletteSize = static_cast<uint32_t>(std::clamp(colors.ColorCount, 1, 256));
    for (uint32_t i = 0; i < raster.paletteSize; ++i) {
        const GifColorType& color = colors.Colors[i];
        const uint32_t alpha = static_cast<int>(i) == transparent ? 0 : 255;
        raster.palette[i] = PackColor(color.Red, color.Green, color.Blue, alpha);
    }
}

struct Pass {
    int first;
    int step;
};
constexpr Pass kWhole[] = {{0, 1}};
constexpr Pass kInterlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};

template <size_t count>
bool ReadRows(GifFileType* gif, const Pass (&passes)[count], Raster& raster) {
    const GifImageDesc& frame = gif->Image;
    for (const Pass& pass : passes)
        for (int y = pass.first; y < frame.Height; y += pass.step) {
            uint8_t* row = raster.Row(static_cast<uint32_t>(frame.Top + y)) + frame.Left;
            if (DGifGetLine(gif, row, frame.Width) != GIF_OK) return false;
        }
    return true;
}

}  // namespace

HRESULT DecodeGif(ImageSource& source, Raster& raster) {
    int error = 0;
    const GifPtr gif(DGifOpen(&source, ReadBytes, &error));
    GraphicsControlBlock control = {};
    control.TransparentColor = NO_TRANSPARENT_COLOR;
    if (!gif || !FindFrame(gif.get(), control) || !FitsScreen(*gif)) return E_FAIL;
    const ColorMapObject* colors = gif->Image.ColorMap ? gif->Image.ColorMap : gif->SColorMap;
    if (!colors) return E_FAIL;
    const HRESULT allocated = raster.Allocate(static_cast<uint32_t>(gif->SWidth),
                                              static_cast<uint32_t>(gif->SHeight), PixelFormat::Indexed8);
    if (FAILED(allocated)) return allocated;
    FillScreen(*gif, control.TransparentColor, raster);
    TakePalette(*colors, control.TransparentColor, raster);
    const bool done =
        gif->Image.Interlace ? ReadRows(gif.get(), kInterlaced, raster) : ReadRows(gif.get(), kWhole, raster);
    return done ? S_OK : E_FAIL;
}
