// Any bytes as a picture of a metadata object: decoded, and what came out encoded and decoded again.
#include <cstdlib>
#include <memory>

#include "AudioCodec/metadata/CMetadata.h"
#include "platform/com/RefPtr.h"
#include "platform/image/Image.h"

namespace {

constexpr int64_t kPixelsMost = 1 << 20;  // beyond, decoding is all that there is time for

std::unique_ptr<CImage> Decode(IAC3Metadata& metadata) {
    CImage* image = nullptr;
    int32_t id = PICTURE_ID_NONE;
    if (metadata.GetPictureImage(&image, id, nullptr) != RESULT_OK) std::abort();
    return std::unique_ptr<CImage>(image);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    RefPtr<IAC3Metadata> metadata;
    PictureSet* set = nullptr;
    if (CreateMetadataObject(metadata.Put()) != RESULT_OK) return 0;
    metadata->GetPictureSet(&set);
    set->StorePicture(data, size, u"image/jpeg", u"", 0);
    const std::unique_ptr<CImage> image = Decode(*metadata);
    const int32_t width = image->GetWidth();
    const int32_t height = image->GetHeight();
    if (image->IsNull() || int64_t{width} * height > kPixelsMost) return 0;
    for (const GUID* format : {&IMAGE_FORMAT_BMP, &IMAGE_FORMAT_PNG})
        if (image->Save(u"/dev/null", format) < 0) std::abort();
    if (metadata->SetPictureFromImage(image.get(), 3, nullptr) != RESULT_OK) std::abort();
    const std::unique_ptr<CImage> again = Decode(*metadata);
    if (again->GetWidth() != width || again->GetHeight() != height) std::abort();
    return 0;
}
