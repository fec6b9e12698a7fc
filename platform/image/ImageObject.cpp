#include "platform/image/ImageObject.h"

#include <algorithm>
#include <utility>

#include "platform/base/Border.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"
#include "platform/file/Paths.h"
#include "platform/image/ImageFunctions.h"
#include "platform/image/ImageLibrary.h"

namespace {

struct CreateRow {
    int32_t bitsPerPixel;
    DWORD flags;
    PixelFormat format;
};
constexpr CreateRow kCreateFormats[] = {
    {1, 0, PixelFormat::Indexed1},
    {4, 0, PixelFormat::Indexed4},
    {8, 0, PixelFormat::Indexed8},
    {16, 0, PixelFormat::Rgb555},
    {24, 0, PixelFormat::Rgb24},
    {32, 0, PixelFormat::Rgb32},
    {32, IMAGE_CREATE_ALPHA, PixelFormat::Argb32},
};

bool IsInPalette(const Raster& raster, int32_t first, int32_t count) {
    return first >= 0 && count >= 0 && int64_t{first} + count <= raster.paletteSize;
}

bool IsInside(const Raster& raster, int32_t x, int32_t y) {
    return x >= 0 && y >= 0 && static_cast<uint32_t>(x) < raster.width &&
           static_cast<uint32_t>(y) < raster.height;
}

bool WriteToFile(void* file, const void* bytes, uint32_t size) {
    DWORD done = 0;
    return WriteFile(file, bytes, size, &done, nullptr) != FALSE;
}

}  // namespace

ImageObject::ImageObject() { ImageLibrary::CountImage(); }

ImageObject::~ImageObject() { ImageLibrary::DropImage(); }

BOOL ImageObject::Create(int32_t width, int32_t height, int32_t bitsPerPixel, DWORD flags) {
    for (const CreateRow& row : kCreateFormats) {
        if (row.bitsPerPixel != bitsPerPixel || row.flags != flags) continue;
        Raster raster;
        // A negative size is one far out of bounds.
        if (FAILED(raster.Allocate(static_cast<uint32_t>(width), static_cast<uint32_t>(height), row.format)))
            return FALSE;
        m_raster = std::move(raster);
        return TRUE;
    }
    return FALSE;
}

HRESULT ImageObject::Load(IStream* stream) {
    if (!stream) return E_POINTER;
    const ImageFunctions* functions = ImageLibrary::Use();
    if (!functions) return E_FAIL;
    Raster raster;
    const HRESULT result = functions->decode(*stream, raster);
    if (SUCCEEDED(result)) m_raster = std::move(raster);
    return result;
}

HRESULT ImageObject::Save(const WCHAR* path, const GUID* format) {
    if (!path) return E_POINTER;
    if (IsNull()) return E_FAIL;
    const ImageFunctions* functions = ImageLibrary::Use();
    const ImageEncoder encode =
        functions ? functions->findEncoder(format, PathFindExtensionW(path)) : nullptr;
    if (!encode) return E_FAIL;
    const UniqueHandle file =
        TakeFile(CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file ? encode(m_raster, {file.get(), WriteToFile}) : E_FAIL;
}

uint32_t ImageObject::GetPixel(int32_t x, int32_t y) const {
    if (!IsInside(m_raster, x, y)) return 0;
    return m_raster.Color(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
}

BOOL ImageObject::SetPixel(int32_t x, int32_t y, uint32_t color) {
    if (!IsInside(m_raster, x, y)) return FALSE;
    m_raster.SetColor(static_cast<uint32_t>(x), static_cast<uint32_t>(y), color);
    return TRUE;
}

BOOL ImageObject::GetPalette(int32_t first, int32_t count, uint32_t* colors) const {
    if (!colors || !IsInPalette(m_raster, first, count)) return FALSE;
    std::copy_n(m_raster.palette + first, count, colors);
    return TRUE;
}

BOOL ImageObject::SetPalette(int32_t first, int32_t count, const uint32_t* colors) {
    if (!colors || !IsInPalette(m_raster, first, count)) return FALSE;
    std::copy_n(colors, count, m_raster.palette + first);
    return TRUE;
}

CImage* vlacwav3::VlCreateImage() {
    return AtBorder(nullptr, []() -> CImage* { return new ImageObject; });
}
