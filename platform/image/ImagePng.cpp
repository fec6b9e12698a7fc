// PNG through libpng.
#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <vector>

#include "platform/image/ImageCodecs.h"

namespace {

[[noreturn]] void LeavePng(png_structp png, png_const_charp /*message*/) { png_longjmp(png, 1); }
void HearWarning(png_structp /*png*/, png_const_charp /*message*/) {}

// --- decoding

// Plain data: longjmp passes over it.
struct PngReader {
    png_structp png;
    png_infop info;
    Raster* raster;
    int passes;  // over the whole image; several where it is interlaced
    bool whole;  // the last row of the last pass is there
    bool ended;  // at the end mark
};

// What the file holds, and how its pixels come.
struct PngKind {
    int color;   // PNG_COLOR_TYPE_…
    int depth;   // bits a channel
    bool keyed;  // has transparency of its own
};

bool IsIndexed(const PngKind& kind) {
    if (kind.color == PNG_COLOR_TYPE_PALETTE) return true;
    return kind.color == PNG_COLOR_TYPE_GRAY && kind.depth <= 8 && !kind.keyed;
}

PixelFormat FormatFor(const PngKind& kind) {
    if (IsIndexed(kind))
        return kind.depth == 1   ? PixelFormat::Indexed1
               : kind.depth == 4 ? PixelFormat::Indexed4
                                 : PixelFormat::Indexed8;
    if (kind.keyed || (kind.color & PNG_COLOR_MASK_ALPHA)) return PixelFormat::Argb32;
    return kind.color == PNG_COLOR_TYPE_RGB && kind.depth == 8 ? PixelFormat::Rgb24 : PixelFormat::Rgb32;
}

void SetTransforms(png_structp png, const PngKind& kind, PixelFormat format) {
    if (IsIndexed(kind)) {
        if (kind.depth == 2) png_set_packing(png);
        return;
    }
    if (kind.color == PNG_COLOR_TYPE_GRAY && kind.depth < 8) png_set_expand_gray_1_2_4_to_8(png);
    if (kind.keyed) png_set_tRNS_to_alpha(png);
    if (kind.depth == 16) png_set_strip_16(png);
    if (!(kind.color & PNG_COLOR_MASK_COLOR)) png_set_gray_to_rgb(png);
    if (format == PixelFormat::Rgb32) png_set_filler(png, 0, PNG_FILLER_AFTER);
    png_set_bgr(png);
}

void TakePalette(const PngReader& reader, const PngKind& kind, Raster& raster) {
    if (kind.color == PNG_COLOR_TYPE_GRAY) return raster.SetGreyPalette(1u << kind.depth);
    png_colorp colors = nullptr;
    int count = 0;
    png_get_PLTE(reader.png, reader.info, &colors, &count);
    png_bytep alphas = nullptr;
    int alphaCount = 0;
    png_get_tRNS(reader.png, reader.info, &alphas, &alphaCount, nullptr);
    count = std::min(count, static_cast<int>(kMaxPalette));
    raster.paletteSize = static_cast<uint32_t>(count);
    for (int i = 0; i < count; ++i)
        raster.palette[i] =
            PackColor(colors[i].red, colors[i].green, colors[i].blue, i < alphaCount ? alphas[i] : 255u);
}

PngReader& ReaderOf(png_structp png) { return *static_cast<PngReader*>(png_get_progressive_ptr(png)); }

void TakeHead(png_structp png, png_infop info) {
    PngReader& reader = ReaderOf(png);
    Raster& raster = *reader.raster;
    const PngKind kind = {png_get_color_type(png, info), png_get_bit_depth(png, info),
                          png_get_valid(png, info, PNG_INFO_tRNS) != 0};
    const PixelFormat format = FormatFor(kind);
    if (FAILED(raster.Allocate(png_get_image_width(png, info), png_get_image_height(png, info), format)))
        png_error(png, "size");
    if (IsIndexed(kind)) TakePalette(reader, kind, raster);
    SetTransforms(png, kind, format);
    reader.passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    if (png_get_rowbytes(png, info) > raster.pitch) png_error(png, "row");
}

void TakeRow(png_structp png, png_bytep row /*null: as in the pass before*/, png_uint_32 y, int pass) {
    PngReader& reader = ReaderOf(png);
    png_progressive_combine_row(png, reader.raster->Row(y), row);
    if (pass == reader.passes - 1 && y == reader.raster->height - 1) reader.whole = true;
}

void TakeEnd(png_structp png, png_infop /*info*/) { ReaderOf(png).ended = true; }

// Fed block by block, so that a file which ends after its pixels is told from one that lacks some: the end
// mark says nothing of them. What is broken before it is an error all the same.
bool RunReader(PngReader& reader, ImageSource& source) {
    if (setjmp(png_jmpbuf(reader.png))) return false;
    png_set_progressive_read_fn(reader.png, &reader, TakeHead, TakeRow, TakeEnd);
    png_set_user_limits(reader.png, kMaxImageSide, kMaxImageSide);
    // Texts and profiles aren't even unpacked: what isn't known is left out, and what isn't
    // needed isn't known.
    png_set_keep_unknown_chunks(reader.png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    while (!reader.ended && (source.Left() > 0 || source.Refill())) {
        png_process_data(reader.png, reader.info, const_cast<png_bytep>(source.Data()), source.Left());
        source.Skip(source.Left());
    }
    return reader.whole;
}

// --- encoding

// Plain data: longjmp passes over it.
struct PngWriter {
    png_structp png;
    png_infop info;
};

void WriteBytes(png_structp png, png_bytep bytes, size_t size) {
    const auto* target = static_cast<const ImageTarget*>(png_get_io_ptr(png));
    if (!target->write(target->context, bytes, static_cast<uint32_t>(size))) png_error(png, "write");
}
void FlushBytes(png_structp /*png*/) {}

void PutPalette(const PngWriter& writer, const Raster& raster) {
    png_color colors[kMaxPalette] = {};
    png_byte alphas[kMaxPalette] = {};
    const int count = 1 << raster.BitsPerPixel();  // all that a pixel can name
    bool opaque = true;
    for (int i = 0; i < count; ++i) {
        const uint32_t color = raster.palette[i];
        colors[i] = {static_cast<png_byte>(color >> 16), static_cast<png_byte>(color >> 8),
                     static_cast<png_byte>(color)};
        alphas[i] = static_cast<png_byte>(color >> 24);
        opaque = opaque && alphas[i] == 255;
    }
    png_set_PLTE(writer.png, writer.info, colors, count);
    if (!opaque) png_set_tRNS(writer.png, writer.info, alphas, count, nullptr);
}

// `scratch` has room for one row of blue, green, red.
bool RunWriter(const PngWriter& writer, const Raster& raster, const ImageTarget& target, uint8_t* scratch) {
    if (setjmp(png_jmpbuf(writer.png))) return false;
    png_set_write_fn(writer.png, const_cast<ImageTarget*>(&target), WriteBytes, FlushBytes);
    const bool alpha = raster.format == PixelFormat::Argb32;
    const int color = raster.IsIndexed() ? PNG_COLOR_TYPE_PALETTE
                      : alpha            ? PNG_COLOR_TYPE_RGB_ALPHA
                                         : PNG_COLOR_TYPE_RGB;
    png_set_IHDR(writer.png, writer.info, raster.width, raster.height,
                 raster.IsIndexed() ? static_cast<int>(raster.BitsPerPixel()) : 8, color, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (raster.IsIndexed()) PutPalette(writer, raster);
    png_write_info(writer.png, writer.info);
    if (!raster.IsIndexed()) png_set_bgr(writer.png);
    const bool direct = raster.IsIndexed() || alpha || raster.format == PixelFormat::Rgb24;
    for (uint32_t y = 0; y < raster.height; ++y) {
        if (!direct) raster.CopyRowAsBgr(y, scratch);
        png_write_row(writer.png, direct ? raster.Row(y) : scratch);
    }
    png_write_end(writer.png, writer.info);
    return true;
}

}  // namespace

HRESULT DecodePng(ImageSource& source, Raster& raster) {
    PngReader reader = {};
    reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, LeavePng, HearWarning);
    if (reader.png) reader.info = png_create_info_struct(reader.png);
    reader.raster = &raster;
    const bool done = reader.info && RunReader(reader, source);
    png_destroy_read_struct(&reader.png, &reader.info, nullptr);
    return done ? S_OK : E_FAIL;
}

HRESULT EncodePng(const Raster& raster, const ImageTarget& target) {
    std::vector<uint8_t> scratch(size_t{raster.width} * 3);
    PngWriter writer = {};
    writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, LeavePng, HearWarning);
    if (writer.png) writer.info = png_create_info_struct(writer.png);
    const bool done = writer.info && RunWriter(writer, raster, target, scratch.data());
    png_destroy_write_struct(&writer.png, &writer.info);
    return done ? S_OK : E_FAIL;
}
