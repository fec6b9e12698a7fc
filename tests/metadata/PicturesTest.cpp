// Pictures of the metadata object on their way in and out, and the stream that they are decoded from.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "AudioCodec/metadata/CMemoryStream.h"
#include "platform/com/TaskText.h"
#include "tests/metadata/MetadataHelpers.h"
#include "tests/platform/SystemFaults.h"
#include "tests/support/ByteStream.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/Painting.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/Threads.h"

namespace {

using Bytes = std::vector<uint8_t>;
using ImagePtr = std::unique_ptr<CImage>;

ImagePtr Photograph(int32_t width, int32_t height) {
    ImagePtr image(VlCreateImage());
    Paint(*image, width, height);
    return image;
}

ImagePtr GetImage(IAC3Metadata& metadata, int32_t id) {
    CImage* image = nullptr;
    EXPECT_EQ(metadata.GetPictureImage(&image, id, nullptr), RESULT_OK);
    return ImagePtr(image);
}

TEST(PictureSet, FindsTheNumberOrTheBestOne) {
    const struct {
        std::vector<int32_t> ids;
        int32_t asked;
        Result result;
        int32_t found;
    } rows[] = {{{0, 3}, -1, 0, 3}, {{0, 4}, -1, 0, 0},   {{4, 8}, -1, 0, 4},
                {{8, 1}, -1, 0, 8}, {{-5, 1}, -1, 0, -5}, {{3, 5}, 5, 0, 5},
                {{3, 5}, 7, 1, 0},  {{}, 7, 1, 0},        {{}, -1, 4, 0}};
    for (const auto& row : rows) {
        PictureSet set;
        for (const int32_t id : row.ids)
            EXPECT_EQ(set.StorePicture(nullptr, 0, u"image/jpeg", u"", id), RESULT_OK);
        PictureRecord dummy;
        PictureRecord* record = &dummy;
        EXPECT_EQ(set.FindPicture(row.asked, &record), row.result);
        EXPECT_EQ(record != nullptr, row.result == RESULT_OK);
        EXPECT_TRUE(!record || record->id == row.found);
        EXPECT_EQ(set.m_cursor == set.m_records.end(), record == nullptr);
    }
}

TEST(PictureSet, APictureIsReplacedWholeOrNotAtAllAndNamedByItsMediaType) {
    PictureSet set;
    const Bytes bytes = {1, 2, 3};
    const PicturePtr& picture = set.m_records[-3];
    EXPECT_EQ(set.StorePicture(bytes.data(), 1, u"IMAGE/X-MS-BMP", u"", -3), RESULT_OK);
    const auto store = [&] {
        return set.StorePicture(&bytes[1], 2, u"image/png+bmp", u"a long caption", -3);
    };
    const auto check = [&] {
        ASSERT_TRUE(picture && picture->data[0] == 1);
        ASSERT_EQ(picture->fileName, u"-3.bmp");
    };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, store, check), RESULT_OK);
    EXPECT_TRUE(picture->size == 2 && picture->data[1] == 3 && picture->caption == u"a long caption");
    EXPECT_EQ(picture->fileName, u"-3.jpg");
    EXPECT_EQ(picture->extension, u"jpg");
}

TEST(Pictures, AFilesBytesArriveAsTheyAreWhateverTheyHold) {
    const auto metadata = NewMetadata();
    const PictureSet& set = SetOf(*metadata);
    const Bytes bytes = {'B', 'M', 0, 255};
    const ScopedFile file(bytes, ".bmp");
    int32_t id = 0;
    const uint8_t* data = bytes.data();
    uint32_t size = 77;
    EXPECT_EQ(metadata->SetPictureFromFile(ScopedFile().Wide().c_str(), 3), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(metadata->SetPictureFromFile(nullptr, 3), RESULT_BAD_ARGUMENT);
    {
        const WithFaults faults({.callsUntilError = 0, .error = EIO});
        EXPECT_EQ(metadata->SetPictureFromFile(file.Wide().c_str(), 3), RESULT_NO_MEMORY);
    }
    EXPECT_EQ(metadata->GetPictureData(&data, &size, nullptr, id), RESULT_FAILED);
    EXPECT_TRUE(data == bytes.data() && size == 77 && !set.m_changed);

    EXPECT_EQ(metadata->SetPictureFromFile(file.Wide().c_str(), PICTURE_ID_NONE), RESULT_OK);
    EXPECT_EQ(metadata->SetPictureFromFile(ScopedFile(Bytes{}).Wide().c_str(), 5), RESULT_OK);
    EXPECT_TRUE(set.m_changed && !set.m_cleared);
    char16_t* text = nullptr;
    EXPECT_EQ(metadata->GetPictureData(&data, &size, &text, id), RESULT_OK);
    EXPECT_EQ(Bytes(data, data + size), bytes);
    EXPECT_EQ(std::u16string(text), u"jpg");
    metadata->Free(text);
    EXPECT_EQ(set.m_records.at(0)->fileName, u"0.jpg");
    EXPECT_EQ(data, set.m_records.at(0)->data.get());  // no copy
    EXPECT_EQ(set.m_records.at(5)->size, 0U);
    id = 9;
    EXPECT_EQ(metadata->GetPictureData(&data, &size, &text, id), RESULT_OK);
    EXPECT_TRUE(data == nullptr && size == 0);
    EXPECT_EQ(metadata->GetPictureData(nullptr, &size, nullptr, id), RESULT_BAD_ARGUMENT);
}

TEST(Pictures, AnImageForNoPictureIsNoneAndForBrokenBytesEmpty) {
    const auto metadata = NewMetadata();
    const ImagePtr here(VlCreateImage());
    CImage* image = here.get();
    int32_t id = PICTURE_ID_NONE;
    char16_t* text = nullptr;
    EXPECT_EQ(metadata->GetPictureImage(nullptr, id, &text), RESULT_FAILED);
    EXPECT_EQ(metadata->GetPictureImage(&image, id, &text), RESULT_FAILED);
    EXPECT_EQ(image, here.get());
    EXPECT_EQ(metadata->SetPictureFromFile(ScopedFile(Bytes{1, 2, 3}).Wide().c_str(), 3), RESULT_OK);
    EXPECT_EQ(metadata->GetPictureImage(nullptr, id, &text), RESULT_BAD_ARGUMENT);
    id = 4;
    EXPECT_EQ(metadata->GetPictureImage(&image, id, &text), RESULT_FAILED);
    EXPECT_TRUE(image == nullptr && text == nullptr);
    id = 3;
    EXPECT_EQ(metadata->GetPictureImage(&image, id, &text), RESULT_OK);
    const ImagePtr empty(image);
    ASSERT_TRUE(empty && text);
    EXPECT_TRUE(empty->IsNull());
    EXPECT_EQ(text[0], 0);
    metadata->Free(text);
    const auto get = [&] { return metadata->GetPictureImage(&image, id, nullptr); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, get, [&] { ASSERT_EQ(image, nullptr); }), RESULT_OK);
    delete image;
}

TEST(Pictures, ANullImageMarksTheSetOnlyIfTheFurtherArgumentIsNullToo) {
    const auto metadata = NewMetadata();
    PictureSet& set = SetOf(*metadata);
    EXPECT_EQ(set.StorePicture(nullptr, 0, u"", u"", 3), RESULT_OK);
    int further = 0;
    EXPECT_EQ(metadata->SetPictureFromImage(nullptr, 3, &further), RESULT_BAD_ARGUMENT);
    EXPECT_FALSE(set.m_changed || set.m_cleared);
    EXPECT_EQ(metadata->SetPictureFromImage(nullptr, 3, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_TRUE(set.m_changed && set.m_cleared);
    EXPECT_EQ(set.m_records.size(), 1U);
}

// A temporary folder of the test's own, which is to be empty at the end.
class PicturesThroughFiles : public testing::Test {
protected:
    void SetUp() override {
        if (const char* before = std::getenv("TMPDIR")) m_before = before;
        setenv("TMPDIR", m_folder.Native("").c_str(), 1);
    }
    void TearDown() override {
        m_before.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", m_before.c_str(), 1);
        EXPECT_TRUE(std::filesystem::is_empty(m_folder.Native("")));
    }

    const TempFolder m_folder;
    std::string m_before;
};

TEST_F(PicturesThroughFiles, AnImageComesBackAsItLookedAndItsBytesAreNotCopied) {
    const auto metadata = NewMetadata();
    PictureSet& set = SetOf(*metadata);
    const ImagePtr photograph = Photograph(320, 200);
    EXPECT_EQ(metadata->SetPictureFromImage(photograph.get(), PICTURE_ID_NONE, nullptr), RESULT_OK);
    EXPECT_TRUE(set.m_changed);
    const PictureRecord& record = *set.m_records.at(0);
    Bytes bytes(record.data.get(), record.data.get() + record.size);
    EXPECT_GT(bytes.size(), 4096U);  // more than one block of the decoder's source
    const size_t ballast = 8 << 20;
    bytes.resize(bytes.size() + ballast);  // after the image's end
    EXPECT_EQ(set.StorePicture(bytes.data(), bytes.size(), u"", u"", 0), RESULT_OK);
    const size_t before = AllocatedSoFar().bytes;
    const ImagePtr back = GetImage(*metadata, 0);
    EXPECT_LT(AllocatedSoFar().bytes - before, ballast / 100);
    ASSERT_TRUE(back->GetWidth() == 320 && back->GetHeight() == 200 && back->GetBPP() == 24);
    for (int32_t i = 0; i < 320 * 200; ++i)
        ASSERT_LE(Step(photograph->GetPixel(i % 320, i / 320), back->GetPixel(i % 320, i / 320)), 12) << i;
}

TEST_F(PicturesThroughFiles, FailuresLeaveTheSetAndTheFolderAsTheyWere) {
    const auto metadata = NewMetadata();
    const ImagePtr photograph = Photograph(64, 64);
    const ImagePtr empty(VlCreateImage());
    EXPECT_EQ(metadata->SetPictureFromImage(empty.get(), 3, nullptr), RESULT_BAD_ARGUMENT);
    const auto setWith = [&](int callsUntilError) {
        const WithFaults faults({.callsUntilError = callsUntilError, .error = EIO});
        return metadata->SetPictureFromImage(photograph.get(), 3, nullptr);
    };
    EXPECT_EQ(setWith(0), RESULT_BAD_ARGUMENT);  // writing fails
    Result result = RESULT_BAD_ARGUMENT;
    for (int calls = 1; result == RESULT_BAD_ARGUMENT; ++calls) result = setWith(calls);
    EXPECT_EQ(result, RESULT_NO_MEMORY);  // all was written, then reading fails
    setenv("TMPDIR", m_folder.Native("nowhere").c_str(), 1);
    EXPECT_EQ(metadata->SetPictureFromImage(photograph.get(), 3, nullptr), RESULT_NO_MEMORY);
    EXPECT_TRUE(SetOf(*metadata).m_records.empty() && !SetOf(*metadata).m_changed);
}

// Each in files of its own; the library of images comes and goes under them.
class PicturesThreads : public PicturesThroughFiles {};

TEST_F(PicturesThreads, EightThreadsNeverMeetInOneFile) {
    InThreads(8, [](uint32_t number) {
        const int32_t width = 10 + static_cast<int32_t>(number);
        for (int turn = 0; turn < 15; ++turn) {
            const auto metadata = NewMetadata();
            const ImagePtr image = Photograph(width, 10 + turn);
            ASSERT_EQ(metadata->SetPictureFromImage(image.get(), 3, nullptr), RESULT_OK);
            ASSERT_EQ(GetImage(*metadata, 3)->GetWidth(), width);
        }
    });
}

// --- the stream

template <class Number>
Number Make(uint64_t value) {
    Number number = {};
    number.QuadPart = static_cast<decltype(number.QuadPart)>(value);
    return number;
}
constexpr auto Size = Make<ULARGE_INTEGER>;

RefPtr<CMemoryStream> Stream(Bytes& bytes, const char16_t* name = nullptr) {
    HRESULT result = E_FAIL;
    auto stream = RefPtr<CMemoryStream>::Adopt(
        new CMemoryStream(name, bytes.data(), static_cast<uint32_t>(bytes.size()), 6, &result));
    EXPECT_EQ(result, S_OK);
    return stream;
}

// The place that a seek leads to.
uint64_t Seek(CMemoryStream& stream, int64_t move, uint32_t origin) {
    auto place = Size(77);  // if to none
    const HRESULT result = stream.Seek(Make<LARGE_INTEGER>(static_cast<uint64_t>(move)), origin, &place);
    EXPECT_EQ(result, place.QuadPart == 77 ? E_INVALIDARG : S_OK);
    return place.QuadPart;
}

// What lies from a place to the end.
Bytes Rest(CMemoryStream& stream, int64_t from) {
    Bytes bytes(5000);
    uint32_t done = 9;
    Seek(stream, from, STREAM_SEEK_SET);
    EXPECT_EQ(stream.Read(bytes.data(), 5000, &done), S_FALSE);
    bytes.resize(done);
    return bytes;
}

TEST(MemoryStream, WritesAndGrowsWithoutTouchingWhatItBorrowed) {
    Bytes bytes = {1, 2, 3, 4};
    const auto stream = Stream(bytes);
    uint8_t buffer[4] = {};
    EXPECT_EQ(stream->Read(buffer, 4, nullptr), S_OK);
    EXPECT_EQ(Seek(*stream, -1, STREAM_SEEK_SET), 77U);
    EXPECT_EQ(Seek(*stream, INT64_MAX, STREAM_SEEK_CUR), 77U);
    EXPECT_EQ(Seek(*stream, 0xFFFFFFFD, STREAM_SEEK_END), 77U);
    EXPECT_EQ(Seek(*stream, 0, 3), 77U);
    EXPECT_EQ(Seek(*stream, 6, STREAM_SEEK_END), 10U);
    EXPECT_EQ(stream->Write("xy", 2, nullptr), S_OK);
    EXPECT_EQ(Rest(*stream, 0), (Bytes{1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 'x', 'y'}));
    EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Rest(*stream, 20), Bytes{});
    // Less only lowers the number; what comes back after it is new.
    for (const uint64_t size : {2U, 4U}) EXPECT_EQ(stream->SetSize(Size(size)), S_OK);
    EXPECT_EQ(Rest(*stream, 0), (Bytes{1, 2, 0, 0}));
    EXPECT_EQ(stream->SetSize(Size(uint64_t{1} << 32)), E_INVALIDARG);
    EXPECT_EQ(Seek(*stream, 0xFFFFFFFF, STREAM_SEEK_SET), 0xFFFFFFFF);
    EXPECT_EQ(stream->Write("x", 1, nullptr), E_INVALIDARG);
    const FailingAllocator heap(0);
    EXPECT_EQ(stream->SetSize(Size(5)), E_OUTOFMEMORY);
}

TEST(MemoryStream, CopiesToItsEndAndTellsWhatItIs) {
    Bytes bytes(3000, 7);
    bytes[2999] = 8;
    const auto stream = Stream(bytes, u"3.jpg");
    Bytes none;
    const auto target = Stream(none);
    auto read = Size(1);
    auto written = Size(1);
    EXPECT_EQ(stream->CopyTo(target.Get(), Size(5000), &read, &written), S_OK);
    EXPECT_TRUE(read.QuadPart == 3000 && written.QuadPart == 3000);
    EXPECT_EQ(Rest(*target, 0), bytes);
    ByteStream readOnly(bytes);
    Seek(*stream, 0, STREAM_SEEK_SET);
    EXPECT_EQ(stream->CopyTo(&readOnly, Size(1), &read, &written), E_FAIL);
    EXPECT_TRUE(read.QuadPart == 1 && written.QuadPart == 0);

    STATSTG status = {};
    EXPECT_EQ(stream->Stat(&status, 0), S_OK);
    EXPECT_EQ(std::u16string(status.pwcsName), u"3.jpg");
    SysFreeString(status.pwcsName);
    EXPECT_TRUE(status.type == 2 && status.cbSize.QuadPart == 3000 && status.grfMode == 6);
    const uint64_t created = uint64_t{status.ctime.dwHighDateTime} << 32 | status.ctime.dwLowDateTime;
    EXPECT_NEAR(double(created) / 1e7 - 11644473600.0, double(std::time(nullptr)), 5);
}

}  // namespace
