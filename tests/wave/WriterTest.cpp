#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/wave/CACWriter.h"
#include "platform/base/RefPtr.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

using Samples = std::vector<int16_t>;
using Bytes = std::vector<uint8_t>;

constexpr uint32_t kMono8At8000 = 0;
constexpr uint32_t kStereo8At8000 = 1;
constexpr uint32_t kMono16At8000 = 2;
constexpr uint32_t kStereo16At44100 = 23;
constexpr uint32_t kMono16At48000 = 26;
constexpr size_t kHeader = 44;

Samples Noise(size_t count) {
    std::mt19937 random(11);
    Samples samples(count);
    for (int16_t& sample : samples) sample = static_cast<int16_t>(random());
    return samples;
}

struct Input {
    uint32_t channels;
    uint32_t rate;
};

RefPtr<CACWriter> NewWriter() { return RefPtr<CACWriter>::Retain(new CACWriter); }

RefPtr<CACWriter> OpenWriter(const ScopedFile& file, Input input, uint32_t format) {
    RefPtr<CACWriter> writer = NewWriter();
    EXPECT_EQ(writer->SetFormat(input.channels, input.rate, 2), RESULT_OK);
    EXPECT_EQ(writer->SelectFormat(format), RESULT_OK);
    EXPECT_EQ(writer->Open(file.Wide().c_str(), OPEN_OVERWRITE), RESULT_OK);
    return writer;
}

// Writes all, in blocks whose sizes go round.
void WriteAll(CACWriter& writer, const Samples& samples, uint32_t channels,
              const std::vector<uint32_t>& blocks) {
    const auto frames = static_cast<uint32_t>(samples.size() / channels);
    uint32_t done = 0;
    for (size_t turn = 0; done < frames; ++turn) {
        const uint32_t count = std::min(blocks[turn % blocks.size()], frames - done);
        uint32_t accepted = 0;
        ASSERT_EQ(writer.Write(samples.data() + size_t{done} * channels, count, &accepted), RESULT_OK);
        ASSERT_EQ(accepted, count);
        done += count;
    }
}

Bytes Written(Input input, uint32_t format, const Samples& samples, const std::vector<uint32_t>& blocks) {
    const ScopedFile file;
    const RefPtr<CACWriter> writer = OpenWriter(file, input, format);
    WriteAll(*writer, samples, input.channels, blocks);
    EXPECT_EQ(writer->Close(), RESULT_OK);
    return file.Bytes();
}

// What the converter makes of the whole input at once, tail included.
Samples Converted(Input input, const Samples& samples, uint32_t channels, uint32_t rate) {
    CSampleRateConverter converter;
    converter.Configure(input.channels, static_cast<int32_t>(input.rate), channels,
                        static_cast<int32_t>(rate));
    converter.ResetToInputPosition(0);
    Samples output(samples.size() * 16 + 4096);
    auto taken = static_cast<uint32_t>(samples.size() / input.channels);
    auto made = static_cast<uint32_t>(output.size() / channels);
    converter.Process(samples.data(), &taken, output.data(), &made);
    uint32_t none = 0;
    auto tail = 2048 / channels;
    converter.Process(nullptr, &none, output.data() + size_t{made} * channels, &tail);
    output.resize(size_t{made + tail} * channels);
    return output;
}

TEST(Writer, WithoutConversionEveryByteOfTheInputStandsBehindTheHeader) {
    const Samples noise = Noise(2 * 5001);
    const Bytes whole = WavImage().Fmt(1, 2, 44100, 16).Data(noise).Image();
    for (const auto& blocks : {std::vector<uint32_t>{5001}, {1, 17, 4096}}) {
        Bytes bytes = Written({2, 44100}, kStereo16At44100, noise, blocks);
        EXPECT_EQ(bytes.size() - 8, bytes[4] + 256U * bytes[5]);
        std::fill_n(bytes.begin() + 4, 4, uint8_t{0});  // the RIFF size, which the image leaves open
        EXPECT_EQ(bytes, whole);
    }
}

struct Case {
    Input input;
    uint32_t format;
    uint32_t channels;
    uint32_t rate;
    bool narrow;
};
class WriterConversions : public testing::TestWithParam<Case> {};

TEST_P(WriterConversions, WriteWhatTheConverterMakesInAnyDivisionIntoBlocks) {
    const Case& c = GetParam();
    for (const uint32_t frames : {20000U, 48U, 49U, 1000U}) {
        const Samples noise = Noise(size_t{frames} * c.input.channels);
        const Samples expected = Converted(c.input, noise, c.channels, c.rate);
        const Bytes whole = Written(c.input, c.format, noise, {frames});
        Bytes audio;
        for (const int16_t sample : expected) {
            if (!c.narrow) audio.push_back(static_cast<uint8_t>(sample));
            audio.push_back(static_cast<uint8_t>((sample >> 8) + (c.narrow ? 128 : 0)));
        }
        if (audio.size() & 1) audio.push_back(0);
        EXPECT_EQ(Bytes(whole.begin() + kHeader, whole.end()), audio);
        for (const auto& blocks : {std::vector<uint32_t>{1}, {15, 1, 31}, {47, 700}, {16}, {4096}})
            EXPECT_EQ(Written(c.input, c.format, noise, blocks), whole);
    }
}
INSTANTIATE_TEST_SUITE_P(Formats, WriterConversions,
                         testing::Values(Case{{2, 44100}, kMono8At8000, 1, 8000, true},
                                         Case{{2, 44100}, kStereo8At8000, 2, 8000, true},
                                         Case{{1, 44100}, kMono16At48000, 1, 48000, false},
                                         Case{{5, 8000}, kMono16At48000, 1, 48000, false},
                                         Case{{1, 44100}, kStereo16At44100, 2, 44100, false}));

TEST(Writer, FewFramesArriveThroughTheConverterToo) {
    const Samples constant(40, 12000);
    for (const uint32_t frames : {1U, 15U, 16U}) {
        const Samples input(constant.begin(), constant.begin() + frames);
        for (const std::vector<uint32_t>& blocks : {std::vector<uint32_t>{frames}, {1}}) {
            const Bytes bytes = Written({1, 44100}, kMono16At48000, input, blocks);
            EXPECT_EQ(bytes.size() - kHeader, std::max(1U, frames * 160 / 147) * 2) << frames;
            EXPECT_GT(bytes[kHeader + 1], frames > 1 ? 20 : 3) << "the first frame must be of the signal";
        }
    }
    EXPECT_EQ(Written({1, 44100}, kMono16At48000, {}, {1}).size(), kHeader);
    // Every number of frames ends, and gives the same in one block and in many.
    for (uint32_t frames = 17; frames < 48; ++frames) {
        const Samples noise = Noise(frames);
        EXPECT_EQ(Written({1, 44100}, kMono16At48000, noise, {frames}),
                  Written({1, 44100}, kMono16At48000, noise, {5}));
    }
}

TEST(Writer, NarrowsToTheHighByteAndPadsAnOddLength) {
    const Bytes bytes = Written({1, 8000}, kMono8At8000, {-32768, -1, 0, 255, 32767}, {5});
    EXPECT_EQ(Bytes(bytes.begin() + kHeader, bytes.end()), (Bytes{0, 127, 128, 128, 255, 0}));
    EXPECT_EQ(bytes[40], 5);
    EXPECT_EQ(bytes[4], bytes.size() - 8);
}

TEST(Writer, SeekOverwritesAndGrowsOnlyBehindTheEnd) {
    const ScopedFile file;
    const RefPtr<CACWriter> writer = OpenWriter(file, {1, 8000}, kMono16At8000);
    WriteAll(*writer, Samples(100, 1), 1, {100});
    struct Move {
        uint32_t origin;
        int64_t offset;
        int64_t reached;
        Result result;
    };
    for (const Move& move :
         {Move{0, 10, 10, RESULT_OK}, Move{1, 5, 15, RESULT_OK}, Move{2, -2, 98, RESULT_OK},
          Move{0, INT64_MAX, 100, RESULT_OK}, Move{0, -7, 0, RESULT_OK}, Move{3, 1, 0, RESULT_BAD_ARGUMENT},
          Move{0, 90, 90, RESULT_OK}}) {
        int64_t position = 0;
        EXPECT_EQ(writer->Seek(move.origin, move.offset, &position), move.result);
        EXPECT_EQ(position, move.reached);
    }
    WriteAll(*writer, Samples(20, 2), 1, {20});
    uint64_t length = 0;
    EXPECT_EQ(writer->GetLength(&length), RESULT_OK);
    EXPECT_EQ(length, 120U);
    writer->Close();
    Samples expected(90, 1);
    expected.insert(expected.end(), 20, 2);
    Bytes image = WavImage().Fmt(1, 1, 8000, 16).Data(expected).Image();
    image[4] = static_cast<uint8_t>(image.size() - 8);
    image[5] = static_cast<uint8_t>((image.size() - 8) >> 8);
    EXPECT_EQ(file.Bytes(), image);
}

TEST(Writer, SeekWithConversionBeginsANewSignalAtTheFramesPlace) {
    const Samples noise = Noise(10000);
    const ScopedFile file;
    const RefPtr<CACWriter> writer = OpenWriter(file, {1, 16000}, kMono16At8000);
    WriteAll(*writer, noise, 1, {10000});
    int64_t position = 0;
    EXPECT_EQ(writer->Seek(1, 0, &position), RESULT_OK);
    EXPECT_EQ(position, 10000);
    EXPECT_EQ(writer->Seek(2, -3000, &position), RESULT_OK);
    EXPECT_EQ(position, 6984);  // 16 input frames are still in the filter: 4992 frames stand in the file
    EXPECT_EQ(writer->Seek(0, 4000, &position), RESULT_OK);
    WriteAll(*writer, noise, 1, {700});
    writer->Close();
    const Samples again = Converted({1, 16000}, noise, 1, 8000);
    const Bytes bytes = file.Bytes();
    ASSERT_EQ(bytes.size(), kHeader + 2 * 7000U);
    for (size_t i = 0; i < 7000; ++i) {
        const int16_t expected = i < 2000 ? again[i] : again[i - 2000];
        ASSERT_EQ(static_cast<int16_t>(bytes[kHeader + 2 * i] | bytes[kHeader + 2 * i + 1] << 8), expected)
            << i;
    }
}

TEST(Writer, StatesGiveTheirCodes) {
    const ScopedFile file;
    const RefPtr<CACWriter> writer = NewWriter();
    const int16_t frame[2] = {};
    uint32_t accepted = 7;
    int64_t position = 0;
    EXPECT_EQ(writer->Write(frame, 1, &accepted), RESULT_NOT_OPEN);
    EXPECT_EQ(writer->Seek(0, 0, &position), RESULT_NOT_OPEN);
    EXPECT_EQ(writer->SelectFormat(28), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(writer->SelectFormat(kStereo16At44100), RESULT_OK);
    EXPECT_EQ(writer->Write(frame, 1, &accepted), RESULT_FAILED);
    EXPECT_EQ(accepted, 0U);
    EXPECT_EQ(writer->Write(nullptr, 1, &accepted), RESULT_BAD_ARGUMENT);

    // An input that can't be converted is refused before a file is touched.
    for (const Input& input : {Input{0, 0}, Input{2, 0}, Input{3, 44100}, Input{0, 44100}}) {
        if (input.channels != 0) writer->SetFormat(input.channels, input.rate, 2);
        EXPECT_EQ(writer->Open(file.Wide().c_str(), OPEN_OVERWRITE), RESULT_FAILED);
        EXPECT_FALSE(exists(file.Path()));
    }
    writer->SetFormat(1, 44100, 2);
    EXPECT_EQ(writer->Open(file.Wide().c_str(), 0), RESULT_OK);
    EXPECT_EQ(writer->Write(frame, 0, &accepted), RESULT_OK);
    EXPECT_EQ(writer->Close(), RESULT_OK);
    EXPECT_EQ(writer->Write(frame, 1, &accepted), RESULT_NOT_OPEN);
    EXPECT_EQ(file.Bytes().size(), kHeader);

    // Without a selection the file of the last format stands; with one that exists, nothing changes.
    EXPECT_EQ(writer->SelectFormat(kMono8At8000), RESULT_OK);
    const Bytes before = file.Bytes();
    EXPECT_EQ(writer->Open(file.Wide().c_str(), 0), RESULT_FAILED);
    EXPECT_EQ(file.Bytes(), before);
    EXPECT_EQ(writer->Write(frame, 1, &accepted), RESULT_WRITE_FAILED);
    EXPECT_EQ(NewWriter()->Open(file.Wide().c_str(), OPEN_OVERWRITE), RESULT_FAILED);
    EXPECT_EQ(file.Bytes().size(), 46U);  // the header of the empty format
}

TEST(Writer, TheNextOpenCompletesTheFileAndALaterSelectionDoesNotReachIt) {
    const ScopedFile first;
    const ScopedFile second;
    const Samples noise = Noise(600);
    const RefPtr<CACWriter> writer = OpenWriter(first, {1, 44100}, kMono16At48000);
    WriteAll(*writer, noise, 1, {300});
    writer->SelectFormat(kStereo16At44100);
    EXPECT_EQ(writer->Open(second.Wide().c_str(), 0), RESULT_OK);
    EXPECT_EQ(first.Bytes(), Written({1, 44100}, kMono16At48000, noise, {600}));
}

TEST(Writer, MetadataIsKeptAsACopyAndWrittenAtClose) {
    const ScopedFile file;
    const RefPtr<CACWriter> writer = OpenWriter(file, {1, 8000}, kMono8At8000);
    RefPtr<IAC3Metadata> metadata;
    ASSERT_EQ(writer->GetMetadata(metadata.Put()), RESULT_OK);
    EXPECT_EQ(metadata->GetAttributeCount(), 0U);
    metadata->SetString(ATTR_TITLE, u"Song");
    metadata->SetLong(ATTR_YEAR, 2004);
    EXPECT_EQ(writer->SetMetadata(metadata.Get()), RESULT_OK);
    EXPECT_EQ(writer->SetMetadata(nullptr), RESULT_BAD_ARGUMENT);
    metadata->SetString(ATTR_TITLE, u"Another");
    ASSERT_EQ(writer->GetMetadata(metadata.Put()), RESULT_OK);
    char16_t* title = nullptr;
    EXPECT_EQ(metadata->GetString(ATTR_TITLE, &title), RESULT_OK);
    EXPECT_EQ(std::u16string(title), u"Song");
    metadata->Free(title);

    WriteAll(*writer, {0, 0, 0}, 1, {3});
    writer->Close();
    Bytes expected = WavImage()
                         .Fmt(1, 1, 8000, 8)
                         .Chunk("data", "\x80\x80\x80")
                         .Header("LIST", 32)
                         .Bytes("INFO")
                         .Chunk("ICRD", std::string("2004\0", 5))
                         .Chunk("INAM", std::string("Song\0", 5))
                         .Image();
    expected[4] = static_cast<uint8_t>(expected.size() - 8);
    EXPECT_EQ(file.Bytes(), expected);
}

TEST(Writer, TellsItsFormats) {
    const RefPtr<CACWriter> writer = NewWriter();
    uint32_t count = 0;
    EXPECT_EQ(writer->GetFormatCount(&count), RESULT_OK);
    EXPECT_EQ(count, 28U);
    AudioFormatInfo format{};
    char16_t* text = nullptr;
    uint32_t index = 0;
    EXPECT_EQ(writer->GetFormatInfo(28, &format, &text), RESULT_BAD_ARGUMENT);
    writer->SetLong(ATTR_TEXT_LANGUAGE, 1041);
    writer->SelectFormat(27);
    EXPECT_EQ(writer->GetSelectedFormat(&index, &format, &text), RESULT_OK);
    EXPECT_EQ(index, 27U);
    EXPECT_EQ(format.avgBytesPerSec, 192000U);
    EXPECT_EQ(std::u16string(text), u"48,000 kHz、16 ビット、ステレオ");
    writer->Free(text);

    uint32_t channels = 0;
    uint32_t rate = 0;
    uint32_t bytes = 0;
    writer->SetFormat(0x10002, 96000, 3);
    EXPECT_EQ(writer->GetFormat(&channels, &rate, &bytes), RESULT_OK);
    EXPECT_EQ(channels, 2U);
    EXPECT_EQ(rate, 96000U - 65536U);
    EXPECT_EQ(bytes, 3U);
}

TEST(Writer, WithoutMemoryNothingIsHalfDone) {
    const ScopedFile file;
    const Samples noise = Noise(500);
    const RefPtr<CACWriter> writer = NewWriter();
    writer->SetFormat(1, 44100, 2);
    writer->SelectFormat(kMono8At8000);
    const std::u16string path = file.Wide();
    const auto open = [&] { return writer->Open(path.c_str(), OPEN_OVERWRITE); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_FAILED, open, [&] { EXPECT_FALSE(exists(file.Path())); }), RESULT_OK);
    uint32_t accepted = 0;
    const auto write = [&] { return writer->Write(noise.data(), 40, &accepted); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, write, [&] { EXPECT_EQ(accepted, 0U); }), RESULT_OK);
    EXPECT_EQ(accepted, 40U);
}

}  // namespace
