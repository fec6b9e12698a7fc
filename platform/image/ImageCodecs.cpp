#include "platform/image/ImageCodecs.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "platform/base/Border.h"
#include "platform/base/Types.h"
#include "platform/file/Paths.h"
#include "platform/image/Image.h"

namespace {

struct DecoderRow {
    std::string_view signature;  // the first bytes of a file
    HRESULT (*decode)(ImageSource& source, Raster& raster);
};
constexpr DecoderRow kDecoders[] = {
    {"\xFF\xD8\xFF", DecodeJpeg},
    {"\x89PNG\r\n\x1A\n", DecodePng},
    {"GIF87a", DecodeGif},
    {"GIF89a", DecodeGif},
    {"BM", DecodeBmp},
};

struct EncoderRow {
    GUID format;
    const WCHAR* extensions[4];
    HRESULT (*encode)(const Raster& raster, const ImageTarget& target);
};
constexpr EncoderRow kEncoders[] = {
    {IMAGE_FORMAT_BMP, {u".bmp", u".dib"}, EncodeBmp},
    {IMAGE_FORMAT_JPEG, {u".jpg", u".jpeg", u".jpe", u".jfif"}, EncodeJpeg},
    {IMAGE_FORMAT_PNG, {u".png"}, EncodePng},
};

HRESULT Decode(IStream& stream, Raster& raster) {
    ImageSource source(stream);
    for (const DecoderRow& row : kDecoders) {
        const size_t size = row.signature.size();
        if (source.Require(size) && std::memcmp(source.Data(), row.signature.data(), size) == 0)
            return AtBorder(E_OUTOFMEMORY, [&] { return row.decode(source, raster); });
    }
    return E_FAIL;
}

bool HasExtension(const EncoderRow& row, const WCHAR* extension) {
    return std::any_of(std::begin(row.extensions), std::end(row.extensions),
                       [&](const WCHAR* known) { return known && lstrcmpiW(known, extension) == 0; });
}

ImageEncoder FindEncoder(const GUID* format, const WCHAR* extension) {
    for (const EncoderRow& row : kEncoders)
        if (format ? *format == row.format : HasExtension(row, extension)) return row.encode;
    return nullptr;
}

constexpr ImageFunctions kFunctions = {Decode, FindEncoder};

}  // namespace

// By the name that kImageFunctionsName tells.
VL_PLATFORM_API const ImageFunctions* VlImageFunctions() { return &kFunctions; }
