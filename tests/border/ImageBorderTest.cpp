// Images as a host meets them that links nothing of the module.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "platform/com/RefPtr.h"
#include "platform/image/Image.h"
#include "tests/border/LoadedModule.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

bool AnyLibraryOnDemandIsMapped() {
    std::ifstream maps("/proc/self/maps");
    const std::string text{std::istreambuf_iterator<char>(maps), {}};
    for (const char* name : {"libvlimage", "libjpeg", "libpng", "libgif", "libvlmedia", "libavcodec",
                             "libvlregistry", "libsqlite"})
        if (text.find(name) != std::string::npos) return true;
    return false;
}

TEST(ImageBorder, ReadingAudioMapsNoLibraryOnDemandAndAPictureDoes) {
    const LoadedModule module(VL_MODULE);
    ASSERT_TRUE(module.Get());
    RefPtr<IPrivateCodecMain3> codec;
    auto* const getObject = module.Find<Result(const GUID*, const GUID*, void**)>("DllVlGetClassObject");
    ASSERT_EQ(getObject(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, reinterpret_cast<void**>(codec.Put())),
              RESULT_OK);
    RefPtr<IAC3StreamReader> reader;
    ASSERT_EQ(codec->CreateStreamReader(reader.Put()), RESULT_OK);
    const ScopedFile file(WavImage().Fmt(1, 1, 8000, 16).Data({1, 2, 3}).Image());
    ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    RefPtr<IAC3Metadata> metadata;
    ASSERT_EQ(reader->GetMetadata(metadata.Put()), RESULT_OK);
    int16_t samples[8];
    uint32_t frames = 0;
    EXPECT_EQ(reader->SetOutputFormat(1, 8000, 2), RESULT_OK);
    EXPECT_EQ(reader->Read(samples, 4, &frames, nullptr), RESULT_OK);
    EXPECT_EQ(frames, 3u);
    EXPECT_FALSE(AnyLibraryOnDemandIsMapped());

    const std::unique_ptr<CImage> image(module.Find<CImage*()>("VlCreateImage")());
    ASSERT_TRUE(image && image->Create(5, 4, 24, 0));
    ASSERT_EQ(metadata->SetPictureFromImage(image.get(), PICTURE_ID_NONE, nullptr), RESULT_OK);
    EXPECT_TRUE(AnyLibraryOnDemandIsMapped());
    CImage* back = nullptr;
    int32_t id = PICTURE_ID_NONE;
    ASSERT_EQ(metadata->GetPictureImage(&back, id, nullptr), RESULT_OK);
    EXPECT_EQ(back->GetWidth(), 5);
    delete back;
}

}  // namespace
