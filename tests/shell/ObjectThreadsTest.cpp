// What hosts may do from several threads: references of all kinds of objects from any thread, and different
// objects on different threads, of one file and of many.
#include <gtest/gtest.h>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/metadata/IAC3MetadataEditor.h"
#include "AudioCodec/shell/CPrivateCodecMain.h"
#include "AudioCodec/shell/object/HandedOut.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "platform/com/ClassFactory.h"
#include "platform/com/OwnClasses.h"
#include "tests/graph/TestFilter.h"
#include "tests/shell/SampleObject.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/Threads.h"
#include "tests/wave/Converted.h"

namespace {

constexpr uint32_t kHolders = 8;
constexpr uint32_t kFiles = 16;

// Each thread has a reference and lets it go last: whichever is the last ends the object while others may
// just be leaving. How often somebody heard that he was the last.
template <class Object>
int DropOnThreads(RefPtr<Object> first) {
    Object* const object = first.Get();
    for (uint32_t i = 0; i < kHolders; ++i) object->AddRef();
    first.Reset();
    std::atomic<int> lasts = 0;
    InThreads(kHolders, [&](uint32_t) {
        for (int i = 0; i < 20; ++i) RefPtr<Object>::Retain(object);
        if (object->Release() == 0) ++lasts;
    });
    return lasts;
}

template <class Interface, class Create>
RefPtr<Interface> Made(Create create) {
    RefPtr<Interface> object;
    EXPECT_EQ(create(object.Put()), 0);
    return object;
}

TEST(ObjectThreads, ReferencesAreTakenAndDroppedFromAnyThreadAndTheLastOneDeletes) {
    const auto codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    const auto reader = [&](IAC3StreamReader** object) { return codec->CreateStreamReader(object); };
    const auto writer = [&](IAC3Writer** object) { return codec->CreateWriter(object); };
    const auto editor = [&](IAC3MetadataEditor** object) {
        return codec->CreateMetadataEditor(u"a", object);
    };
    for (int round = 0; round < 10; ++round) {
        std::atomic<int> deleted = 0;
        EXPECT_EQ(DropOnThreads(RefPtr<SampleObject>::Retain(new SampleObject(&deleted))), 1);
        EXPECT_EQ(deleted, 1);
        EXPECT_EQ(DropOnThreads(RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain)), 1);
        EXPECT_EQ(DropOnThreads(Made<IAC3StreamReader>(reader)), 1);
        EXPECT_EQ(DropOnThreads(Made<IAC3Writer>(writer)), 1);
        EXPECT_EQ(DropOnThreads(Made<IAC3MetadataEditor>(editor)), 1);
        EXPECT_EQ(DropOnThreads(Made<IAC3Metadata>(&CreateMetadataObject)), 1);
        EXPECT_EQ(DropOnThreads(NewTestFilter(PINDIR_OUTPUT)), 1);
        EXPECT_EQ(DropOnThreads(NewTestAllocator()), 1);
        for (const OwnClass& made : kOwnClasses) {
            const auto create = [&](IUnknown** object) {
                return CoCreateInstance(made.id, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                        reinterpret_cast<void**>(object));
            };
            EXPECT_EQ(DropOnThreads(Made<IUnknown>(create)), 1);
        }
    }
}

// 16 bits as they are, converted, or decoded from 24 bits by a graph.
TEST(FileThreads, SixteenReadersOfOneFileHearAllOfIt) {
    const Samples noise = Noise(6000);
    const ScopedFile plain(WavImage().Fmt(1, 2, 44100, 16).Data(noise).Image());
    const Samples converted =
        Converted(noise, {2, 44100}, {2, 48000}, &CSampleRateConverter::ResetToOutputPosition);
    std::string wide;
    for (const int16_t sample : noise)
        wide += {'\0', static_cast<char>(sample & 0xFF), static_cast<char>(sample >> 8)};
    const ScopedFile coded(WavImage().Fmt(1, 2, 44100, 24).Chunk("data", wide).Image());
    const auto codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    InThreads(kFiles, [&](uint32_t number) {
        const bool converts = number % 3 == 1;
        const Samples& due = converts ? converted : noise;
        for (int round = 0; round < 3; ++round) {
            RefPtr<IAC3StreamReader> reader;
            ASSERT_EQ(codec->CreateStreamReader(reader.Put()), RESULT_OK);
            const ScopedFile& file = number % 3 == 2 ? coded : plain;
            ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
            ASSERT_EQ(reader->SetOutputFormat(2, converts ? 48000 : 44100, 2), RESULT_OK);
            Samples heard(due.size() + 100);
            uint32_t frames = 1, all = 0;
            while (frames != 0) {
                ASSERT_EQ(reader->Read(heard.data() + size_t{all} * 2,
                                       std::min<uint32_t>(50 + number * 10, uint32_t(heard.size() / 2) - all),
                                       &frames, nullptr),
                          RESULT_OK);
                all += frames;
            }
            heard.resize(size_t{all} * 2);
            EXPECT_TRUE(heard == due) << number;
        }
    });
}

TEST(FileThreads, SixteenWritersAndEditorsOfFilesOfTheirOwnMakeEachWhole) {
    const TempFolder folder;
    const auto codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    const Samples noise = Noise(4000);
    InThreads(kFiles, [&](uint32_t number) {
        const std::u16string path = folder.Wide(std::to_string(number) + ".wav");
        const std::u16string title(1 + 3 * number, static_cast<char16_t>(u'a' + number));
        for (int round = 0; round < 3; ++round) {
            RefPtr<IAC3Writer> writer;
            ASSERT_EQ(codec->CreateWriter(writer.Put()), RESULT_OK);
            ASSERT_EQ(writer->SetFormat(2, 44100, 2), RESULT_OK);
            uint32_t index = 0;
            AudioFormatInfo format{};
            while (writer->GetFormatInfo(index, &format, nullptr) == RESULT_OK &&
                   (format.channels != 2 || format.samplesPerSec != 44100 || format.bitsPerSample != 16))
                ++index;
            ASSERT_EQ(writer->SelectFormat(index), RESULT_OK);
            ASSERT_EQ(writer->Open(path.c_str(), OPEN_OVERWRITE), RESULT_OK);
            uint32_t accepted = 0;
            ASSERT_EQ(writer->Write(noise.data(), uint32_t(noise.size() / 2), &accepted), RESULT_OK);
            ASSERT_EQ(writer->Close(), RESULT_OK);

            RefPtr<IAC3MetadataEditor> editor;
            RefPtr<IAC3Metadata> metadata;
            ASSERT_EQ(codec->CreateMetadataEditor(path.c_str(), editor.Put()), RESULT_OK);
            ASSERT_EQ(editor->Open(), RESULT_OK);
            ASSERT_EQ(editor->GetMetadata(metadata.Put()), RESULT_OK);
            metadata->SetString(ATTR_TITLE, title.c_str());
            ASSERT_EQ(editor->SetMetadata(metadata.Get()), RESULT_OK);
            ASSERT_EQ(editor->Save(), RESULT_OK);
        }
        RefPtr<IAC3StreamReader> reader;
        RefPtr<IAC3Metadata> metadata;
        ASSERT_EQ(codec->CreateStreamReader(reader.Put()), RESULT_OK);
        ASSERT_EQ(reader->Open(path.c_str(), OPEN_READ_ONLY), RESULT_OK);
        ASSERT_EQ(reader->GetMetadata(metadata.Put()), RESULT_OK);
        HandedOutText read(*metadata);
        ASSERT_EQ(metadata->GetString(ATTR_TITLE, read.Put()), RESULT_OK);
        EXPECT_EQ(read.Get(), title);
        Samples heard(noise.size() + 2);
        uint32_t frames = 0;
        ASSERT_EQ(reader->Read(heard.data(), uint32_t(heard.size() / 2), &frames, nullptr), RESULT_OK);
        heard.resize(size_t{frames} * 2);
        EXPECT_TRUE(heard == noise) << number;
    });
}

}  // namespace
