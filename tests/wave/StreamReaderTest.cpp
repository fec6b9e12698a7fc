#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "platform/base/RefPtr.h"
#include "tests/support/ByteStream.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

using Samples = std::vector<int16_t>;

Samples Noise(size_t count) {
    std::mt19937 random(7);
    Samples samples(count);
    for (int16_t& sample : samples) sample = static_cast<int16_t>(random());
    return samples;
}

RefPtr<CACStreamReader> NewReader() { return RefPtr<CACStreamReader>::Retain(new CACStreamReader); }

// Reads until 0 frames come back, in blocks whose sizes go round.
Samples ReadAll(CACStreamReader& reader, uint32_t channels, const std::vector<uint32_t>& blocks) {
    Samples all;
    for (size_t turn = 0;; ++turn) {
        const uint32_t frames = blocks[turn % blocks.size()];
        Samples block(size_t{frames} * channels);
        uint32_t read = 0;
        EXPECT_EQ(reader.Read(block.data(), frames, &read, nullptr), RESULT_OK);
        EXPECT_LE(read, frames);
        if (read == 0) return all;
        all.insert(all.end(), block.begin(), block.begin() + std::ptrdiff_t{read} * channels);
    }
}

struct Source {
    uint16_t channels;
    uint16_t bits;
    uint32_t outChannels;
    uint32_t outRate;
};
class StreamReaderFormats : public testing::TestWithParam<Source> {
protected:
    static constexpr size_t kFrames = 30000;
    static constexpr uint32_t kRate = 44100;

    StreamReaderFormats() : m_file(Image().Image()) {}

    static WavImage Image() {
        const Source& source = GetParam();
        WavImage image;
        image.Fmt(1, source.channels, kRate, source.bits);
        const Samples noise = Noise(kFrames * source.channels);
        if (source.bits == 16) return image.Data(noise);
        std::string bytes;
        for (const int16_t sample : noise) bytes += static_cast<char>(sample >> 8);
        return image.Chunk("data", bytes);
    }
    RefPtr<CACStreamReader> Open() const {
        RefPtr<CACStreamReader> reader = NewReader();
        EXPECT_EQ(reader->SetOutputFormat(GetParam().outChannels, GetParam().outRate, 2), RESULT_OK);
        EXPECT_EQ(reader->Open(m_file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
        return reader;
    }

    ScopedFile m_file;
};

TEST_P(StreamReaderFormats, AnyDivisionIntoBlocksGivesTheSameFramesAndTheirNumber) {
    const uint32_t channels = GetParam().outChannels;
    const Samples whole = ReadAll(*Open(), channels, {100000});
    int64_t length = 0;
    ASSERT_EQ(Open()->GetLength(&length), RESULT_OK);
    EXPECT_NEAR(static_cast<double>(whole.size()) / channels, static_cast<double>(length), 6);
    EXPECT_EQ(length, static_cast<int64_t>(kFrames) * GetParam().outRate / kRate);
    for (const std::vector<uint32_t>& blocks : {std::vector<uint32_t>{1}, {7}, {1000}, {3, 4096, 1, 250}})
        ASSERT_EQ(ReadAll(*Open(), channels, blocks), whole);
}

TEST_P(StreamReaderFormats, AReadBehindASeekGivesWhatAStraightReadGives) {
    const uint32_t channels = GetParam().outChannels;
    const Samples whole = ReadAll(*Open(), channels, {1000});
    const RefPtr<CACStreamReader> reader = Open();
    const auto frames = static_cast<int64_t>(whole.size() / channels);
    for (const int64_t place : {int64_t{4000}, int64_t{3}, frames / 2, int64_t{0}, frames - 500}) {
        int64_t reached = -1;
        ASSERT_EQ(reader->Seek(0, place, &reached), RESULT_OK);
        ASSERT_EQ(reached, place);
        Samples block(size_t{400} * channels);
        uint32_t read = 0;
        ASSERT_EQ(reader->Read(block.data(), 400, &read, nullptr), RESULT_OK);
        ASSERT_EQ(read, 400u);
        const auto from = whole.begin() + place * channels;
        ASSERT_TRUE(std::equal(block.begin(), block.end(), from)) << place;
    }
}

TEST_P(StreamReaderFormats, ReadAllocatesNothingInTheSteadyState) {
    const RefPtr<CACStreamReader> reader = Open();
    Samples block(size_t{500} * GetParam().outChannels);
    uint32_t read = 0;
    ASSERT_EQ(reader->Read(block.data(), 500, &read, nullptr), RESULT_OK);
    const size_t before = AllocatedSoFar().blocks;
    for (int blocks = 0; blocks < 8; ++blocks) reader->Read(block.data(), 500, &read, nullptr);
    EXPECT_EQ(AllocatedSoFar().blocks, before);
    EXPECT_EQ(read, 500u);
}

TEST_P(StreamReaderFormats, AStreamGivesWhatAFileGives) {
    ByteStream stream(Image().Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    reader->SetOutputFormat(GetParam().outChannels, GetParam().outRate, 2);
    ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
    EXPECT_EQ(ReadAll(*reader, GetParam().outChannels, {777}),
              ReadAll(*Open(), GetParam().outChannels, {777}));
}

INSTANTIATE_TEST_SUITE_P(Sources, StreamReaderFormats,
                         testing::Values(Source{2, 16, 2, 44100}, Source{1, 8, 1, 44100},
                                         Source{2, 8, 2, 44100}, Source{2, 16, 2, 48000},
                                         Source{1, 16, 2, 44100}, Source{2, 16, 1, 8000},
                                         Source{1, 8, 2, 48000}, Source{6, 16, 1, 96000},
                                         Source{6, 8, 6, 22050}));

TEST(StreamReader, EightBitsAreWidenedAndSixteenUntouched) {
    const ScopedFile narrow(
        WavImage().Fmt(1, 1, 44100, 8).Chunk("data", std::string("\x00\x80\xFF\x7F", 4)).Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    reader->SetOutputFormat(1, 44100, 2);
    ASSERT_EQ(reader->Open(narrow.Wide().c_str(), 0), RESULT_OK);
    EXPECT_EQ(ReadAll(*reader, 1, {3}), (Samples{-32768, 0, 32512, -256}));

    const Samples extremes{-32768, 32767, 0, -1};
    const ScopedFile wide(WavImage().Fmt(1, 1, 44100, 16).Data(extremes).Image());
    ASSERT_EQ(reader->Open(wide.Wide().c_str(), 0), RESULT_OK);
    EXPECT_EQ(ReadAll(*reader, 1, {3}), extremes);
}

TEST(StreamReader, AnswersBeforeAnyOpen) {
    const RefPtr<CACStreamReader> reader = NewReader();
    uint32_t channels = 0;
    uint32_t rate = 0;
    uint32_t bytes = 0;
    ASSERT_EQ(reader->GetOutputFormat(&channels, &rate, &bytes), RESULT_OK);
    EXPECT_EQ(std::tuple(channels, rate, bytes), std::tuple(2u, 44100u, 2u));
    int16_t buffer[8];
    uint32_t read = 99;
    uint8_t end = 0;
    EXPECT_EQ(reader->Read(buffer, 2, &read, &end), RESULT_FAILED);
    EXPECT_EQ(read, 0u);
    EXPECT_EQ(end, 1);
    int64_t position = -1;
    EXPECT_EQ(reader->GetLength(&position), RESULT_FAILED);
    EXPECT_EQ(reader->Seek(0, 10, &position), RESULT_OK);
    EXPECT_EQ(position, 0);
    EXPECT_EQ(reader->Close(), RESULT_OK);
}

TEST(StreamReader, NullPointersAndWrongSampleSizesAreBadArguments) {
    const RefPtr<CACStreamReader> reader = NewReader();
    int16_t buffer[2];
    uint32_t number = 0;
    EXPECT_EQ(reader->Read(nullptr, 1, &number, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(reader->Read(buffer, 1, nullptr, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(reader->GetLength(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(reader->GetOutputFormat(&number, nullptr, &number), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(reader->GetSourceFormat(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(reader->GetMetadata(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(reader->SetOutputFormat(2, 44100, 3), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(reader->GetExtension(0, nullptr), RESULT_BAD_EXTENSION);
    EXPECT_EQ(reader->GetExtensionCount(nullptr), RESULT_OK);
    EXPECT_EQ(reader->Open(nullptr, 0), RESULT_CANNOT_OPEN);
    EXPECT_EQ(reader->OpenStream(nullptr, 0), RESULT_NOT_WAVE);
}

TEST(StreamReader, TellsItsExtensionsAndNames) {
    const RefPtr<CACStreamReader> reader = NewReader();
    struct Case {
        uint32_t index;
        Result result;
        const char16_t* text;
    };
    for (const Case& c :
         {Case{0, RESULT_OK, u"wav"}, {1, RESULT_OK, u"aif"}, {2, RESULT_BAD_EXTENSION, u""}}) {
        char16_t* text = nullptr;
        EXPECT_EQ(reader->GetExtension(c.index, &text), c.result);
        EXPECT_EQ(std::u16string(text), c.text);
        reader->Free(text);
    }
    char16_t* text = nullptr;
    ASSERT_EQ(reader->GetString(ATTR_STREAM_EXTENSION, &text), RESULT_OK);
    EXPECT_EQ(std::u16string(text), u".wav");
    reader->Free(text);
    EXPECT_EQ(reader->GetAttributeCount(), 4u);
}

TEST(StreamReader, TheEndFlagTellsAShortBlock) {
    const ScopedFile file(WavImage().Fmt(1, 2, 44100, 16).Data(Noise(20)).Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    struct Case {
        uint32_t asked, read;
        uint8_t end;
    };
    Samples buffer(100, 77);
    for (const Case& c : {Case{4, 4, 0}, {6, 6, 0}, {1, 0, 1}}) {
        uint32_t read = 0;
        uint8_t end = 9;
        EXPECT_EQ(reader->Read(buffer.data(), c.asked, &read, &end), RESULT_OK);
        EXPECT_EQ(read, c.read);
        EXPECT_EQ(end, c.end);
    }
    int64_t position = 0;
    EXPECT_EQ(reader->Seek(2, 1000, &position), RESULT_OK);
    EXPECT_EQ(position, 10);
    EXPECT_EQ(reader->Seek(2, -3, &position), RESULT_OK);
    EXPECT_EQ(position, 7);
    EXPECT_EQ(reader->Seek(3, 0, &position), RESULT_BAD_ARGUMENT);
    uint32_t read = 0;
    uint8_t end = 0;
    EXPECT_EQ(reader->Read(buffer.data(), 50, &read, &end), RESULT_OK);
    EXPECT_EQ(read, 3u);
    EXPECT_EQ(end, 1);
    EXPECT_EQ(buffer[99], 77);
}

TEST(StreamReader, AChangeOfOutputKeepsThePlace) {
    const Samples noise = Noise(44100);
    const ScopedFile file(WavImage().Fmt(1, 1, 44100, 16).Data(noise).Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    reader->SetOutputFormat(1, 22050, 2);
    ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    int64_t position = 0;
    ASSERT_EQ(reader->Seek(0, 1000, &position), RESULT_OK);
    ASSERT_EQ(reader->SetOutputFormat(1, 48000, 2), RESULT_OK);
    ASSERT_EQ(reader->Seek(1, 0, &position), RESULT_OK);
    EXPECT_EQ(position, 2176);  // 1000 * 48000 / 22050, truncated
    ASSERT_EQ(reader->SetOutputFormat(1, 44100, 2), RESULT_OK);
    Samples block(100);
    uint32_t read = 0;
    ASSERT_EQ(reader->Read(block.data(), 100, &read, nullptr), RESULT_OK);
    // Frame 1999, less the 16 frames by which a filter would reach back.
    EXPECT_EQ(block, Samples(noise.begin() + 1983, noise.begin() + 2083));
}

TEST(StreamReader, SeeksWithConversionCountOutputFrames) {
    const ScopedFile file(WavImage().Fmt(1, 1, 44100, 16).Data(Noise(44100)).Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    reader->SetOutputFormat(1, 48000, 2);
    ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    struct Case {
        uint32_t origin;
        int64_t offset, lands;
        Result result;
    };
    for (const Case& c : {Case{2, 0, 48000, RESULT_OK},
                          {2, -480, 47520, RESULT_OK},
                          {1, -20, 47500, RESULT_OK},
                          {0, -7, 0, RESULT_OK},
                          {1, -7, 0, RESULT_OK},
                          {0, INT64_MAX, INT64_MAX, RESULT_OK},
                          {1, 5, INT64_MAX, RESULT_OK},
                          {0, 100, 100, RESULT_OK},
                          {9, 4, 100, RESULT_BAD_ARGUMENT}}) {
        int64_t position = 100;
        EXPECT_EQ(reader->Seek(c.origin, c.offset, &position), c.result);
        EXPECT_EQ(position, c.lands) << c.offset << " from " << c.origin;
    }
}

TEST(StreamReader, TakesTheInnerWayByFormatAndExtension) {
    const std::vector<uint8_t> direct = WavImage().Fmt(1, 1, 8000, 16).Data({1, 2}).Image();
    const RefPtr<CACStreamReader> reader = NewReader();
    const auto open = [&](const std::vector<uint8_t>& image, const std::string& extension) {
        const ScopedFile file(image, extension);
        return reader->Open(file.Wide().c_str(), OPEN_READ_ONLY);
    };
    // Never tried as a WAV file, and what the graph doesn't know either.
    for (const char* extension : {".aif", ".AIF"})
        EXPECT_EQ(open({'F', 'O', 'R', 'M'}, extension), RESULT_SOURCE_NOT_LOADED);
    EXPECT_EQ(open({'F', 'O', 'R', 'M'}, ".aiff"), RESULT_NOT_WAVE);
    EXPECT_EQ(open(WavImage().Fmt(1, 1, 8000, 24).Data({1, 2, 3}).Image(), ".wav"), RESULT_OK);
    EXPECT_EQ(open(WavImage().Fmt(3, 1, 8000, 32).Data({1, 2}).Image(), ".wav"), RESULT_OK);
    EXPECT_EQ(open(WavImage().Fmt(0x7777, 1, 8000, 16).Data({1}).Image(), ".wav"), RESULT_SOURCE_NOT_LOADED);
    EXPECT_EQ(open(direct, ".wav"), RESULT_OK);
}

TEST(StreamReader, AStreamOfAnotherKindIsRefusedByCode) {
    ByteStream deep(WavImage().Fmt(1, 1, 8000, 24).Data({1, 2, 3}).Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    EXPECT_EQ(reader->OpenStream(&deep, 0), RESULT_NOT_PCM);
    AudioFormatInfo format{};
    EXPECT_EQ(reader->GetSourceFormat(&format), RESULT_OK);
    EXPECT_EQ(format.bitsPerSample, 24);
    EXPECT_EQ(format.version, 3u);
    int16_t buffer[100];
    uint32_t read = 0;
    EXPECT_EQ(reader->Read(buffer, 10, &read, nullptr), RESULT_NOT_PCM);
}

TEST(StreamReader, AFailedOpenLeavesNothingToReadAndForgetsTheStream) {
    const RefPtr<CACStreamReader> reader = NewReader();
    int16_t buffer[100];
    uint32_t read = 9;
    ByteStream stream(WavImage().Fmt(1, 1, 44100, 16).Data(Noise(100)).Image());
    for (const char* extension : {".aif", ".wav"}) {
        stream.position = 0;
        ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
        const ScopedFile unknown(WavImage().Fmt(0x7777, 1, 8000, 16).Data({1}).Image(), extension);
        ASSERT_EQ(reader->Open(unknown.Wide().c_str(), OPEN_READ_ONLY), RESULT_SOURCE_NOT_LOADED);
        EXPECT_EQ(reader->Read(buffer, 10, &read, nullptr), RESULT_FAILED);
        const uint64_t calls = stream.calls;
        reader->Seek(0, 5, nullptr);
        EXPECT_EQ(stream.calls, calls);
    }
}

TEST(StreamReader, PositionsEndAtTheLimitAlsoWhereAStreamGoesOnBehindItsAudio) {
    ByteStream stream(
        WavImage().Fmt(1, 1, 44100, 16).Data(Noise(100)).Chunk("tail", std::string(4000, 't')).Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    reader->SetOutputFormat(1, 48000, 2);
    ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
    int64_t position = 0;
    ASSERT_EQ(reader->Seek(0, INT64_MAX, &position), RESULT_OK);
    Samples block(500);
    uint32_t read = 0;
    ASSERT_EQ(reader->Read(block.data(), 500, &read, nullptr), RESULT_OK);
    EXPECT_GT(read, 0u);
    ASSERT_EQ(reader->Seek(1, 0, &position), RESULT_OK);
    EXPECT_EQ(position, INT64_MAX);
}

// A stream's block align is believed as it stands, so buffers must not depend on it.
TEST(StreamReader, BlockAlignsThatContradictTheFormatGiveACode) {
    for (const uint16_t align : std::initializer_list<uint16_t>{0, 3, 60000}) {
        for (const uint16_t channels : std::initializer_list<uint16_t>{0, 1}) {
            ByteStream stream(WavImage()
                                  .Header("fmt ", 16)
                                  .Word16(1)
                                  .Word16(channels)
                                  .Word32(44100)
                                  .Word32(0)
                                  .Word16(align)
                                  .Word16(16)
                                  .Chunk("data", std::string(200000, 'x'))
                                  .Image());
            const RefPtr<CACStreamReader> reader = NewReader();
            ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
            for (const uint32_t rate : {44100u, 48000u}) {
                reader->SetOutputFormat(channels, rate, 2);
                Samples buffer(64);
                uint32_t read = 0;
                int64_t length = 0;
                EXPECT_EQ(reader->Read(buffer.data(), 32, &read, nullptr), RESULT_NOT_WAVE);
                EXPECT_EQ(reader->GetLength(&length), align == 0 ? RESULT_NOT_WAVE : RESULT_OK);
                reader->Seek(0, 1, nullptr);
            }
        }
    }
}

TEST(StreamReader, AFailingStreamGivesACodeAtEveryCall) {
    const WavImage image = WavImage().Fmt(1, 1, 44100, 16).Data(Noise(9000));
    for (uint64_t call = 0; call < 40; ++call) {
        ByteStream stream(image.Image());
        stream.failFromCall = call;
        const RefPtr<CACStreamReader> reader = NewReader();
        reader->SetOutputFormat(1, 48000, 2);
        if (reader->OpenStream(&stream, 0) != RESULT_OK) continue;
        Samples block(3000);
        uint32_t read = 1;
        Result result = RESULT_OK;
        while (result == RESULT_OK && read != 0) result = reader->Read(block.data(), 3000, &read, nullptr);
        EXPECT_TRUE(result == RESULT_NOT_WAVE || stream.calls <= call) << call;
        EXPECT_TRUE(result == RESULT_OK || read == 0) << call;
    }
}

TEST(StreamReader, WithoutMemoryAnOpenGivesACodeAndLeavesNoSource) {
    const ScopedFile file(WavImage().Fmt(1, 2, 48000, 16).Data(Noise(2000)).Image());
    const std::u16string path = file.Wide();
    const RefPtr<CACStreamReader> reader = NewReader();
    Samples block(64);
    uint32_t read = 0;
    const Result opened = RunWithMoreMemory(
        RESULT_CANNOT_OPEN, [&] { return reader->Open(path.c_str(), OPEN_READ_ONLY); },
        [&] { EXPECT_NE(reader->Read(block.data(), 32, &read, nullptr), RESULT_OK); });
    EXPECT_EQ(opened, RESULT_OK);
    EXPECT_EQ(RunWithMoreMemory(
                  RESULT_NO_MEMORY, [&] { return reader->SetOutputFormat(1, 8000, 2); },
                  [&] { EXPECT_EQ(reader->Read(block.data(), 32, &read, nullptr), RESULT_OK); }),
              RESULT_OK);
}

TEST(StreamReader, ClosedReadersKeepTheirAnswers) {
    const ScopedFile file(WavImage().Fmt(1, 2, 44100, 16).Data(Noise(200)).Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    EXPECT_EQ(reader->Close(), RESULT_OK);
    int64_t length = 0;
    EXPECT_EQ(reader->GetLength(&length), RESULT_OK);
    EXPECT_EQ(length, 100);
    int16_t buffer[4];
    uint32_t read = 0;
    EXPECT_EQ(reader->Read(buffer, 2, &read, nullptr), RESULT_FAILED);
    EXPECT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    EXPECT_EQ(reader->Read(buffer, 2, &read, nullptr), RESULT_OK);
    EXPECT_EQ(read, 2u);
}

}  // namespace
