// The built file: what it exports, what it brings into the process, and how it comes and goes.
#include <memory>
#include <regex>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "platform/base/LastError.h"
#include "platform/base/Types.h"
#include "platform/image/Image.h"
#include "platform/loader/StringResources.h"
#include "tests/border/LoadedModule.h"
#include "tests/platform/media/CommandLine.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

TEST(ModuleFile, ExportsItsFunctionsAndNothingElse) {
    const std::vector<uint8_t> names = OutputOf("nm -D --defined-only --format=just-symbols '" VL_MODULE "'");
    EXPECT_EQ(std::string(names.begin(), names.end()),
              "DllRegisterServer\nDllUnregisterServer\nDllVlGetClassObject\nGetCodecGUID\n");
}

std::string TextOf(const std::string& command) {
    const std::vector<uint8_t> text = OutputOf(command);
    return {text.begin(), text.end()};
}

// A host that has functions of the platform's names, or a standard library of its own, meets nothing of ours.
TEST(ShippedFiles, ShowTheirOwnPrefixUnderAVersionAndAreHardened) {
    const std::regex ours("(A VLPLATFORM_3|T Vl\\w+@@VLPLATFORM_3|T DllGetClassObject@@VLPLATFORM_3)\n");
    for (const std::string file :
         {"lib/libvlplatform.so", "lib/libvlimage.so", "lib/libvlregistry.so", "lib/libvlmedia.so",
          "lib/libvlplot.so", "lib/Filters/VlDSAudioStreamReader.ax", "lib/VlACWav3.so", "lib/libvlwav.so",
          "bin/vlwav"}) {
        SCOPED_TRACE(file);
        const std::string path = " '" VL_BUILD "/" + file + "'";
        if (file != "lib/VlACWav3.so" && file != "lib/libvlwav.so" && file != "bin/vlwav") {
            const std::string names = TextOf("nm -D --defined-only" + path + " | cut -c18-");
            EXPECT_EQ(std::regex_replace(names, ours, ""), "");
        }
        const std::string elf = TextOf("readelf -hldW --dyn-syms" + path);
        for (const char* mark : {"DYN (", "GNU_RELRO", " NOW", "__stack_chk_fail"})
            EXPECT_NE(elf.find(mark), std::string::npos) << mark;
        EXPECT_TRUE(std::regex_search(elf, std::regex("GNU_STACK .* RW  *0x10\n")));
    }
#ifdef _FORTIFY_SOURCE
    EXPECT_NE(TextOf("nm -D '" VL_MODULE "'").find("_chk@"), std::string::npos);
#endif
    EXPECT_NE(TextOf("readelf -d '" VL_BUILD "/lib/libvlplatform.so'").find("[libvlplatform.so.3]"),
              std::string::npos);
}

TEST(ModuleFile, GoesWithItsStringResourcesWhenTheLastOneClosesItAndCanComeBack) {
    const auto find = [](HMODULE module, WORD name, WORD language) {
        return FindResourceExW(module, RT_STRING, MAKEINTRESOURCEW(name), language);
    };
    for (int round = 0; round < 3; ++round) {
        HMODULE handle = nullptr;
        {
            const LoadedModule module(VL_MODULE);
            handle = module.Get();
            EXPECT_TRUE(IsMapped("/VlACWav3.so"));
            module.CreateCodec()->InitCapabilities();
            for (WORD name = 63; name <= 65; ++name) EXPECT_TRUE(find(handle, name, 1041));
            EXPECT_EQ(find(handle, 64, 0x400), nullptr);
            EXPECT_EQ(GetLastError(), ERROR_RESOURCE_LANG_NOT_FOUND);
        }
        EXPECT_FALSE(IsMapped("/VlACWav3.so"));
        EXPECT_EQ(find(handle, 64, 1033), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_RESOURCE_DATA_NOT_FOUND);
    }
}

TEST(ModuleFile, ReadingAudioMapsNoLibraryOnDemandAndAPictureOrAGraphDoes) {
    const LoadedModule module(VL_MODULE);
    RefPtr<IAC3StreamReader> reader;
    ASSERT_EQ(module.CreateCodec()->CreateStreamReader(reader.Put()), RESULT_OK);
    const ScopedFile file(WavImage().Fmt(1, 1, 8000, 16).Data({1, 2, 3}).Image());
    ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    RefPtr<IAC3Metadata> metadata;
    ASSERT_EQ(reader->GetMetadata(metadata.Put()), RESULT_OK);
    int16_t samples[8];
    uint32_t frames = 0;
    EXPECT_EQ(reader->SetOutputFormat(1, 8000, 2), RESULT_OK);
    EXPECT_EQ(reader->Read(samples, 4, &frames, nullptr), RESULT_OK);
    EXPECT_EQ(frames, 3u);
    for (const char* library : {"libvlimage", "libjpeg", "libpng", "libgif", "libvlmedia", "libavcodec",
                                "libvlregistry", "libsqlite"})
        EXPECT_FALSE(IsMapped(library)) << library;

    const std::unique_ptr<CImage> image(module.Find<CImage*()>("VlCreateImage")());
    ASSERT_TRUE(image && image->Create(5, 4, 24, 0));
    ASSERT_EQ(metadata->SetPictureFromImage(image.get(), PICTURE_ID_NONE, nullptr), RESULT_OK);
    EXPECT_TRUE(IsMapped("libvlimage"));
    CImage* back = nullptr;
    int32_t id = PICTURE_ID_NONE;
    ASSERT_EQ(metadata->GetPictureImage(&back, id, nullptr), RESULT_OK);
    EXPECT_EQ(back->GetWidth(), 5);
    delete back;

    file.Write(WavImage().Fmt(1, 1, 8000, 24).Chunk("data", "123456").Image());
    EXPECT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    EXPECT_TRUE(IsMapped("libavcodec"));
}

}  // namespace
