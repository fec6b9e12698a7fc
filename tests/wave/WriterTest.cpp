#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <set>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/wave/CACWriter.h"
#include "AudioCodec/wave/FormatText.h"
#include "AudioCodec/wave/StockFormatTexts.h"
#include "AudioCodec/wave/StockFormats.h"
#include "platform/com/RefPtr.h"
#include "riff/ByteOrder.h"
#include "tests/platform/SystemFaults.h"
#include "tests/shell/SampleObject.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"
#include "tests/wave/Converted.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kMono8At8000 = 0;
constexpr uint32_t kStereo8At8000 = 1;
constexpr uint32_t kMono16At8000 = 2;
constexpr uint32_t kStereo16At44100 = 23;
constexpr uint32_t kMono16At48000 = 26;
constexpr size_t kHeader = 44;

RefPtr<CACWriter> NewWriter() { return RefPtr<CACWriter>::Retain(new CACWriter); }

RefPtr<CACWriter> OpenWriter(const ScopedFile& file, const Shape& input, uint32_t format) {
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

Bytes Written(const Shape& input, uint32_t format, const Samples& samples,
              const std::vector<uint32_t>& blocks) {
    const ScopedFile file;
    const RefPtr<CACWriter> writer = OpenWriter(file, input, format);
    WriteAll(*writer, samples, input.channels, blocks);
    EXPECT_EQ(writer->Close(), RESULT_OK);
    return file.Bytes();
}

struct Case {
    Shape input;
    uint32_t format;
    Shape output;
    bool narrow;
};
class WriterConversions : public testing::TestWithParam<Case> {};

TEST_P(WriterConversions, WriteWhatTheConverterMakesInAnyDivisionIntoBlocks) {
    const auto& [input, format, output, narrow] = GetParam();
    for (const uint32_t frames : {20000U, 48U, 49U, 999U}) {
        const Samples noise = Noise(size_t{frames} * input.channels);
        std::string audio;
        for (const int16_t sample : input == output ? noise : Converted(noise, input, output)) {
            if (!narrow) audio += static_cast<char>(sample);
            audio += static_cast<char>((sample >> 8) + (narrow ? 128 : 0));
        }
        WavImage expected;
        expected.Fmt(1, static_cast<uint16_t>(output.channels), output.rate, narrow ? 8 : 16);
        expected.Chunk("data", audio).Sized();
        for (const auto& blocks : {std::vector<uint32_t>{frames}, {15, 1, 31}, {47, 700}, {16}, {4096}})
            ASSERT_EQ(Written(input, format, noise, blocks), expected.Image()) << frames;
    }
}
INSTANTIATE_TEST_SUITE_P(Formats, WriterConversions,
                         testing::Values(Case{{2, 44100}, kStereo16At44100, {2, 44100}, false},
                                         Case{{1, 8000}, kMono8At8000, {1, 8000}, true},
                                         Case{{2, 44100}, kMono8At8000, {1, 8000}, true},
                                         Case{{2, 44100}, kStereo8At8000, {2, 8000}, true},
                                         Case{{1, 44100}, kMono16At48000, {1, 48000}, false},
                                         Case{{5, 8000}, kMono16At48000, {1, 48000}, false},
                                         Case{{1, 44100}, kStereo16At44100, {2, 44100}, false}));

TEST(Writer, FewFramesArriveThroughTheConverterToo) {
    const Samples constant(47, 12000);
    // Every number of frames brings its share, in one block and in many, and begins in its place.
    for (uint32_t frames = 1; frames < 48; ++frames) {
        const Samples input(constant.begin(), constant.begin() + frames);
        const Bytes bytes = Written({1, 44100}, kMono16At48000, input, {frames});
        EXPECT_EQ(bytes.size() - kHeader, std::max(1U, frames * 160 / 147) * 2) << frames;
        EXPECT_GT(bytes[kHeader + 1], frames > 1 ? 20 : 3) << "the first frame must be of the signal";
        for (const uint32_t block : {1U, 5U})
            EXPECT_EQ(Written({1, 44100}, kMono16At48000, input, {block}), bytes) << frames;
        // Silence after them is what a longer input would bring.
        const Samples noise = Noise(frames);
        Samples padded = noise;
        padded.resize(100);
        Bytes share = Written({1, 44100}, kMono16At48000, noise, {frames});
        const Bytes longer = Written({1, 44100}, kMono16At48000, padded, {100});
        EXPECT_TRUE(std::equal(share.begin() + kHeader, share.end(), longer.begin() + kHeader)) << frames;
    }
    EXPECT_EQ(Written({1, 44100}, kMono16At48000, {}, {1}).size(), kHeader);
    EXPECT_EQ(Written({1, 44100}, kMono16At8000, {12000}, {1}).size(), kHeader + 2);
}

TEST(Writer, SeekOverwritesAndGrowsOnlyBehindTheEnd) {
    const ScopedFile file;
    const RefPtr<CACWriter> writer = OpenWriter(file, {1, 8000}, kMono16At8000);
    WriteAll(*writer, Samples(100, 1), 1, {100});
    const struct {
        uint32_t origin;
        int64_t offset, reached;
        Result result = RESULT_OK;
    } moves[] = {{0, 10, 10},         {1, 5, 15}, {2, -2, 98},
                 {0, INT64_MAX, 100}, {0, -7, 0}, {3, 1, 0, RESULT_BAD_ARGUMENT},
                 {0, 90, 90}};
    int64_t position = 0;
    for (const auto& move : moves) {
        EXPECT_EQ(writer->Seek(move.origin, move.offset, &position), move.result);
        EXPECT_EQ(position, move.reached);
    }
    WriteAll(*writer, Samples(20, 2), 1, {20});
    EXPECT_EQ(writer->Seek(0, 0, &position), RESULT_OK);
    WriteAll(*writer, Samples(5, 3), 1, {5});
    uint64_t length = 0;
    EXPECT_EQ(writer->GetLength(&length), RESULT_OK);
    EXPECT_EQ(length, 125U);
    writer->Close();
    Samples expected(5, 3);
    expected.insert(expected.end(), 85, 1);
    expected.insert(expected.end(), 20, 2);
    EXPECT_EQ(file.Bytes(), WavImage().Fmt(1, 1, 8000, 16).Data(expected).Sized().Image());
}

TEST(Writer, SeekWithConversionBeginsANewSignalAtTheFramesPlace) {
    const Samples noise = Noise(10000);
    const ScopedFile file;
    const RefPtr<CACWriter> writer = OpenWriter(file, {1, 16000}, kMono16At8000);
    int64_t position = 0;
    WriteAll(*writer, Noise(5), 1, {5});  // few frames go into the file too before the place changes
    EXPECT_EQ(writer->Seek(2, 0, &position), RESULT_OK);
    EXPECT_GT(position, 0);
    EXPECT_EQ(writer->Seek(0, 0, &position), RESULT_OK);
    WriteAll(*writer, noise, 1, {10000});
    EXPECT_EQ(writer->Seek(1, 0, &position), RESULT_OK);
    EXPECT_EQ(position, 10000);
    EXPECT_EQ(writer->Seek(2, -3000, &position), RESULT_OK);
    EXPECT_EQ(position, 6984);  // 16 input frames are still in the filter: 4992 frames stand in the file
    EXPECT_EQ(writer->Seek(0, 4000, &position), RESULT_OK);
    WriteAll(*writer, noise, 1, {5, 700});
    writer->Close();
    const Samples again = Converted(noise, {1, 16000}, {1, 8000});
    Samples expected(again.begin(), again.begin() + 2000);
    expected.insert(expected.end(), again.begin(), again.begin() + 5000);
    EXPECT_EQ(file.Bytes(), WavImage().Fmt(1, 1, 8000, 16).Data(expected).Sized().Image());
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
    for (const Shape& input : {Shape{0, 0}, {2, 0}, {3, 44100}, {0, 44100}}) {
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

    // An Open that fails changes nothing in a file that exists; a new one gets the header of no format.
    EXPECT_EQ(writer->SelectFormat(kMono8At8000), RESULT_OK);
    const Bytes before = file.Bytes();
    EXPECT_EQ(writer->Open(file.Wide().c_str(), 0), RESULT_FAILED);
    EXPECT_EQ(writer->Write(frame, 1, &accepted), RESULT_WRITE_FAILED);
    EXPECT_EQ(NewWriter()->Open(file.Wide().c_str(), OPEN_OVERWRITE), RESULT_FAILED);
    EXPECT_EQ(file.Bytes(), before);
    const ScopedFile fresh;
    EXPECT_EQ(NewWriter()->Open(fresh.Wide().c_str(), OPEN_OVERWRITE), RESULT_FAILED);
    EXPECT_EQ(fresh.Bytes().size(), 46U);
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
    WriteAll(*writer, {0, 0, 0}, 1, {3});
    writer->Close();
    const WavImage tags = None().Chunk("ICRD", {"2004\0", 5}).Chunk("INAM", {"Song\0", 5});
    WavImage expected = WavImage().Fmt(1, 1, 8000, 8).Chunk("data", "\x80\x80\x80").Info(tags);
    EXPECT_EQ(file.Bytes(), expected.Sized().Image());
}

TEST(Writer, TagsThatReachPast4GiBStayOutAndAreReported) {
    for (const uint32_t size : {0xFFFFFFB8u, 0xFFFFFFB9u}) {  // a list of 26 bytes has room, or none
        const bool fits = size == 0xFFFFFFB8u;
        const ScopedFile file;
        const RefPtr<CACWriter> writer = OpenWriter(file, {1, 8000}, kMono8At8000);
        WriteAll(*writer, {1}, 1, {1});
        // The file is full all at once: after a write that fails the writer asks it for its size.
        std::filesystem::resize_file(file.Path(), kHeader + uint64_t{size});
        {
            const WithFaults full({.changesUntilError = 0, .error = ENOSPC});
            const int16_t frame = 0;
            uint32_t accepted = 0;
            EXPECT_EQ(writer->Write(&frame, 1, &accepted), RESULT_WRITE_FAILED);
        }
        RefPtr<IAC3Metadata> metadata;
        ASSERT_EQ(writer->GetMetadata(metadata.Put()), RESULT_OK);
        metadata->SetString(ATTR_TITLE, u"Song");
        EXPECT_EQ(writer->SetMetadata(metadata.Get()), RESULT_OK);
        EXPECT_EQ(writer->Close(), fits ? RESULT_OK : RESULT_WRITE_FAILED);
        const uint64_t end = std::filesystem::file_size(file.Path());
        EXPECT_EQ(end, kHeader + uint64_t{size} + (fits ? 26 : 1));
        Bytes head(8);
        std::ifstream(file.Path(), std::ios::binary).read(reinterpret_cast<char*>(head.data()), 8);
        EXPECT_EQ(LoadLE32(&head[4]), end - 8);
    }
}

TEST(Writer, TellsItsFormats) {
    const RefPtr<CACWriter> writer = NewWriter();
    AudioFormatInfo format{};
    uint32_t index = 0;
    EXPECT_EQ(writer->GetFormatInfo(28, &format, nullptr), RESULT_BAD_ARGUMENT);
    writer->SelectFormat(27);
    EXPECT_EQ(writer->GetSelectedFormat(&index, &format, nullptr), RESULT_OK);
    EXPECT_EQ(index, 27U);
    EXPECT_EQ(format.avgBytesPerSec, 192000U);

    uint32_t channels = 0;
    uint32_t rate = 0;
    uint32_t bytes = 0;
    writer->SetFormat(0x10002, 96000, 3);
    EXPECT_EQ(writer->GetFormat(&channels, &rate, &bytes), RESULT_OK);
    EXPECT_EQ(std::tuple(channels, rate, bytes), std::tuple(2U, 96000U - 65536U, 3U));
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

// The text, or "untouched".
std::u16string Load(uint32_t id, uint32_t language) {
    SampleObject memory;
    char16_t untouched[] = u"untouched";
    char16_t* text = untouched;
    LoadFormatText(memory, id, language, &text);
    const std::u16string copy = text;
    if (text != untouched) memory.Free(text);
    return copy;
}

TEST(FormatText, EachLanguageHasItsWordsAndItsSignWithinEachRate) {
    const struct {
        uint32_t language;
        uint32_t index;
        const char16_t* text;
    } rows[] = {
        {1033, 6, u"11.025 kHz, 16 Bits, Mono"},  // the last of its block
        {1031, 23, u"44.100 kHz, 16 Bits, Stereo"},
        {1040, 27, u"48.000 kHz, 16 Bits, Stereo"},
        {1034, 23, u"44,100 kHz, 16 bits, est\u00E9reo"},
        {1046, 0, u"8,000 kHz, 8 bits, Mono"},
        {1036, 0, u"8,000 kHz, 8 bits, Mono"},
        {1036, 23, u"44.100 kHz, 16 bits, St\u00E9r\u00E9o"},
        {1043, 4, u"11,025 kHz, 8 bits, mono"},
        {1043, 24, u"48.000 kHz, 8 bits, mono"},
        {1041, 8, u"16,000 kHz\u30018 \u30D3\u30C3\u30C8\u3001\u30E2\u30CE\u30E9\u30EB"},
        {1041, 23, u"44.100 kHz\u300116 \u30D3\u30C3\u30C8\u3001\u30B9\u30C6\u30EC\u30AA"},
        // A region gets its language: Spain, modern sort; Portugal; no region.
        {3082, 23, u"44,100 kHz, 16 bits, est\u00E9reo"},
        {2070, 23, u"44,100 kHz, 16 bits, Est\u00E9reo"},
        {0x0C, 23, u"44.100 kHz, 16 bits, St\u00E9r\u00E9o"},
    };
    for (const auto& [language, index, text] : rows)
        EXPECT_EQ(Load(kFirstFormatTextId + index, language), text) << language << " " << index;
    for (const uint32_t language : {0u, 4u, 0x404u, 0x804u, 1042u, 2057u, 0x80000009u, 0xFFFFFFFFu})
        EXPECT_EQ(Load(1024, language), u"44.100 kHz, 16 Bits, Stereo") << language;
    for (const uint32_t language : {1031u, 1034u, 1036u, 1040u, 1041u, 1043u, 1046u}) {
        std::set<std::u16string> texts;
        for (uint32_t i = 0; i < kStockFormatCount; ++i) texts.insert(Load(kFirstFormatTextId + i, language));
        EXPECT_EQ(texts.size(), kStockFormatCount) << language;
    }
}

TEST(FormatText, WithoutATextOrMemoryTheReceiverStaysAsItWas) {
    for (const uint32_t id : {0u, 1000u, 1029u, 1040u, 0xFFFFFFFFu})
        EXPECT_EQ(Load(id, 1036), u"untouched") << id;
    struct NoMemory : SampleObject {
        void* Alloc(uint32_t) override { return nullptr; }
    } none;
    char16_t* text = nullptr;
    LoadFormatText(none, kFirstFormatTextId, 1033, &text);
    EXPECT_EQ(text, nullptr);
}

}  // namespace
