#include "capi/handles/PictureConversion.h"

#include <iterator>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "capi/ModuleFailure.h"
#include "capi/OptionalLibrary.h"
#include "capi/SystemFailure.h"
#include "capi/handles/WriteFailure.h"
#include "capi/posix/Descriptor.h"
#include "capi/posix/ModuleFile.h"
#include "platform/base/Utf.h"
#include "platform/image/Image.h"

namespace {

constexpr const char* kName = "a picture in memory";
constexpr int32_t kGiven = 0;
constexpr int32_t kMade = 3;

void StoreBytes(IAC3Metadata& metadata, const void* bytes, size_t size) {
    Descriptor file;
    RequireSystem(file.MakeInMemory(), "Making", kName);
    RequireSystem(file.Write(bytes, size), "Making", kName);
    RequireModule(metadata.SetPictureFromFile(Utf::FromUtf8(file.ReopeningPath()).c_str(), kGiven), "Reading",
                  kName);
}

std::unique_ptr<CImage> Decode(IAC3Metadata& metadata) {
    CImage* image = nullptr;
    int32_t id = kGiven;
    const Result result = metadata.GetPictureImage(&image, id, nullptr);
    std::unique_ptr<CImage> owned(image);
    RequireModule(result, "Decoding", kName);
    if (owned && !owned->IsNull()) return owned;
    const std::string missing = TryOptionalLibrary(kImageLibrary, ModuleFile::OfOurs(kImageLibrary.file));
    if (!missing.empty()) throw Failure(VLW_NO_DECODER, "Pictures can't be decoded here: " + missing);
    throw Failure(VLW_BAD_VALUE, "This is no whole JPEG, PNG, GIF or BMP picture.");
}

std::vector<uint8_t> MakeJpeg(IAC3Metadata& metadata, CImage& image) {
    RequireModule(metadata.SetPictureFromImage(&image, kMade, nullptr), "Encoding", kName);
    const uint8_t* data = nullptr;
    uint32_t size = 0;
    int32_t id = kMade;
    RequireModule(metadata.GetPictureData(&data, &size, nullptr, id), "Encoding", kName);
    return {data, data + size};
}

std::vector<uint8_t> MakeBitmap(IAC3Metadata&, CImage& image) {
    Descriptor file;
    RequireSystem(file.MakeInMemory(), "Making", kName);
    if (image.Save(Utf::FromUtf8(file.ReopeningPath()).c_str(), &IMAGE_FORMAT_BMP) < 0)
        throw SystemFailure(FindWriteError(file, 1), "Making the picture", {});
    uint64_t size = 0;
    size_t done = 0;
    RequireSystem(file.Size(size), "Reading", kName);
    std::vector<uint8_t> bytes(size);
    RequireSystem(file.ReadAt(bytes.data(), bytes.size(), 0, done), "Reading", kName);
    bytes.resize(done);
    return bytes;
}

struct KindRow {
    const char* name;
    std::vector<uint8_t> (*make)(IAC3Metadata& metadata, CImage& image);
};
constexpr KindRow kKinds[] = {{"jpg", MakeJpeg}, {"bmp", MakeBitmap}};

}  // namespace

std::vector<uint8_t> ConvertPicture(const Module& module, const void* bytes, size_t size,
                                    const std::string& kind) {
    for (const KindRow& row : kKinds) {
        if (row.name != kind) continue;
        const RefPtr<IAC3Metadata> metadata = module.NewMetadata();
        StoreBytes(*metadata, bytes, size);
        const std::unique_ptr<CImage> image = Decode(*metadata);
        return row.make(*metadata, *image);
    }
    throw Failure(VLW_BAD_ARGUMENT, "Pictures are made as \"jpg\" and \"bmp\", not as \"" + kind + "\".");
}
