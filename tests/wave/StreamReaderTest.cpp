#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "platform/com/RefPtr.h"
#include "tests/support/ByteStream.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"
#include "tests/wave/Converted.h"

namespace {

WavImage Mono(size_t frames) { return WavImage().Fmt(1, 1, 44100, 16).Data(Noise(frames)); }

RefPtr<CACStreamReader> NewReader(const Shape& output = {2, 44100}) {
    auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    EXPECT_EQ(reader->SetOutputFormat(output.channels, output.rate, 2), RESULT_OK);
    return reader;
}

// Reads until 0 frames come back, in blocks whose sizes go round.
Samples ReadAll(CACStreamReader& reader, uint32_t channels, const std::vector<uint32_t>& blocks) {
    Samples all;
    Samples block(size_t{*std::max_element(blocks.begin(), blocks.end())} * channels);
    for (size_t turn = 0;; ++turn) {
        const uint32_t frames = blocks[turn % blocks.size()];
        uint32_t read = 0;
        const Result result = reader.Read(block.data(), frames, &read, nullptr);
        if (result != RESULT_OK || read > frames) ADD_FAILURE() << result << ", " << read << " frames";
        if (result != RESULT_OK || read == 0 || read > frames) return all;
        all.insert(all.end(), block.begin(), block.begin() + std::ptrdiff_t{read} * channels);
    }
}

ByteStream Stream(const Shape& shape, const Samples& samples) {
    const auto channels = static_cast<uint16_t>(shape.channels);
    return ByteStream(WavImage().Fmt(1, channels, shape.rate, 16).Data(samples).Image());
}

// A host reads until it gets 0 frames, so one early 0 loses the rest of the file.
TEST(StreamReaderBlocks, NoSizeEndsEarlyOrChangesASample) {
    size_t turn = 0;
    for (const auto& [from, to] : Passages()) {
        const Samples noise = Noise(9000 / from.channels * from.channels);
        const Samples whole = Converted(noise, from, to, &CSampleRateConverter::ResetToOutputPosition);
        ByteStream stream = Stream(from, noise);
        const RefPtr<CACStreamReader> reader = NewReader(to);
        for (; turn < std::size(kBlockSizes); turn += 2) {
            const uint32_t block = kBlockSizes[turn];
            stream.position = 0;
            ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
            EXPECT_TRUE(ReadAll(*reader, to.channels, {block}) == whole)
                << from.rate << " to " << to.rate << ", " << from.channels << " channels, block " << block;
        }
        turn -= std::size(kBlockSizes);  // the next passage takes the other half
    }
}

// How many frames come of N source frames at L/M, to the frame: hosts give lengths by it.
int64_t DueFrames(int64_t frames, const CSampleRateConverter& ratio) {
    // A first offer that isn't short has all its frames in their place. One of 24 to 47 frames begins late,
    // or with its first frames passed over.
    const int64_t heard = frames < 24 || frames >= 48 ? frames : 2 * frames - 32;
    return (heard * ratio.PhaseCount() + ratio.InputStep() - 1) / ratio.InputStep();
}

TEST(StreamReaderBlocks, EveryLengthGivesTheFramesThatAreDueAndNoneAfterThem) {
    for (const auto& [from, to] : Passages()) {
        CSampleRateConverter ratio;
        ratio.Configure(1, static_cast<int32_t>(from.rate), 1, static_cast<int32_t>(to.rate));
        const RefPtr<CACStreamReader> reader = NewReader(to);
        for (const uint32_t frames :
             {0U, 1U, 2U, 15U, 16U, 17U, 23U, 24U, 31U, 32U, 47U, 48U, 49U, 60U, 341U, 1023U, 1025U, 4097U}) {
            const Samples noise = Noise(size_t{frames} * from.channels);
            ByteStream stream = Stream(from, noise);
            for (const uint32_t block : {10000U, 5U}) {
                stream.position = 0;
                ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
                const Samples all =
                    ReadAll(*reader, to.channels, {block * std::max(1U, to.rate / from.rate)});
                ASSERT_EQ(static_cast<int64_t>(all.size() / to.channels), DueFrames(frames, ratio))
                    << frames << " frames, " << from.rate << " to " << to.rate;
                if (frames >= 48) {
                    ASSERT_EQ(all, Converted(noise, from, to, &CSampleRateConverter::ResetToOutputPosition));
                }
                uint32_t read = 9;
                Samples more(to.channels);
                EXPECT_EQ(reader->Read(more.data(), 1, &read, nullptr), RESULT_OK);
                EXPECT_EQ(read, 0U);
            }
        }
    }
}

// A seek needs 48 source frames from its place on, or a place within the last 15. Whoever wants a frame
// between moves to a place before that and drops what comes first.
TEST(StreamReaderBlocks, SeeksNearTheEndGiveTheFramesOfThatPlace) {
    constexpr int64_t kFrames = 3000;
    for (const auto& [from, to] : Passages()) {
        const Samples noise = Noise(size_t{kFrames} * from.channels);
        const Samples whole = Converted(noise, from, to, &CSampleRateConverter::ResetToOutputPosition);
        const auto length = static_cast<int64_t>(whole.size() / to.channels);
        CSampleRateConverter ratio;
        ratio.Configure(1, static_cast<int32_t>(from.rate), 1, static_cast<int32_t>(to.rate));
        ByteStream stream = Stream(from, noise);
        const RefPtr<CACStreamReader> reader = NewReader(to);
        ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
        for (int64_t place = length; place >= 0 && place > length - 500; place -= 1 + (length - place) / 9) {
            const int64_t left = kFrames - place * ratio.InputStep() / ratio.PhaseCount();  // in the source
            const int64_t enough = (kFrames - 48) * ratio.PhaseCount() / ratio.InputStep();
            const int64_t start = left > 15 && left < 48 ? std::min(place, enough) : place;
            ASSERT_EQ(reader->Seek(0, start, nullptr), RESULT_OK);
            const Samples rest = ReadAll(*reader, to.channels, {700});
            const auto expected = whole.begin() + std::min(start, length) * to.channels;
            ASSERT_EQ(rest, Samples(expected, whole.end())) << start << " of " << length;
        }
    }
}

// The converter wants 48 frames at once, after a seek 64: more than 4096 bytes hold of many channels.
TEST(StreamReaderBlocks, ManyChannelsArriveInTheirPlaceAlsoAfterASeek) {
    for (const uint32_t channels : {33U, 64U, 100U, 255U, 3000U}) {
        const Shape from{channels, 44100};
        const Samples noise = Noise(size_t{400} * channels);
        const Samples whole =
            Converted(noise, from, {1, 48000}, &CSampleRateConverter::ResetToOutputPosition);
        ByteStream stream = Stream(from, noise);
        const RefPtr<CACStreamReader> reader = NewReader({1, 48000});
        ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
        EXPECT_EQ(ReadAll(*reader, 1, {50}), whole) << channels;
        ASSERT_EQ(reader->Seek(0, 200, nullptr), RESULT_OK);
        EXPECT_EQ(ReadAll(*reader, 1, {50}), Samples(whole.begin() + 200, whole.end())) << channels;
    }
}

struct Source {
    uint16_t channels, bits;
    Shape output;
};
class StreamReaderFormats : public testing::TestWithParam<Source> {
protected:
    static constexpr size_t kFrames = 40000;
    static constexpr uint32_t kRate = 44100;

    StreamReaderFormats() {
        const auto& [channels, bits, output] = GetParam();
        Samples input = Noise(kFrames * channels);
        std::string bytes;
        for (int16_t& sample : input) {
            if (bits == 16) bytes += static_cast<char>(sample);
            const auto high = static_cast<uint8_t>(sample >> 8);
            bytes += static_cast<char>(high);
            if (bits == 8) sample = static_cast<int16_t>((high - 128) * 256);
        }
        m_image.Fmt(1, channels, kRate, bits).Chunk("data", bytes);
        const Shape own{channels, kRate};
        constexpr auto kReset = &CSampleRateConverter::ResetToOutputPosition;
        m_whole = output == own ? input : Converted(input, own, output, kReset);
        m_file.Write(m_image.Image());
    }
    RefPtr<CACStreamReader> Open() const {
        RefPtr<CACStreamReader> reader = NewReader(m_output);
        EXPECT_EQ(reader->Open(m_file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
        return reader;
    }

    Shape m_output = GetParam().output;
    WavImage m_image;
    Samples m_whole;
    ScopedFile m_file;
};

TEST_P(StreamReaderFormats, AnyDivisionOfAFileOrAStreamGivesAllThatTheConverterMakes) {
    int64_t length = 0;
    ASSERT_EQ(Open()->GetLength(&length), RESULT_OK);
    EXPECT_EQ(length, static_cast<int64_t>(kFrames) * m_output.rate / kRate);
    Samples once(m_whole.size());
    uint32_t read = 0;
    const auto frames = static_cast<uint32_t>(once.size() / m_output.channels);
    ASSERT_EQ(Open()->Read(once.data(), frames, &read, nullptr), RESULT_OK);
    EXPECT_EQ(once, m_whole);
    for (const std::vector<uint32_t>& blocks : {std::vector<uint32_t>{7}, {3, 4096, 1, 250}})
        ASSERT_EQ(ReadAll(*Open(), m_output.channels, blocks), m_whole);
    ByteStream stream(WavImage("begins anywhere").Bytes(m_image.Text()).Image());
    stream.position = 15;
    const RefPtr<CACStreamReader> reader = NewReader(m_output);
    ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
    EXPECT_EQ(ReadAll(*reader, m_output.channels, {777}), m_whole);
}

TEST_P(StreamReaderFormats, AReadBehindASeekGivesTheFramesOfThatPlaceAndTakesNoMoreMemory) {
    const RefPtr<CACStreamReader> reader = Open();
    const auto frames = static_cast<int64_t>(m_whole.size() / m_output.channels);
    Samples block(size_t{400} * m_output.channels);
    uint32_t read = 0;
    for (const int64_t place :
         {int64_t{4000}, int64_t{3}, int64_t{17}, int64_t{161}, frames / 2, int64_t{0}, frames - 500}) {
        int64_t reached = -1;
        ASSERT_EQ(reader->Seek(0, place, &reached), RESULT_OK);
        ASSERT_EQ(reached, place);
        ASSERT_EQ(reader->Read(block.data(), 400, &read, nullptr), RESULT_OK);
        ASSERT_EQ(read, 400u);
        const auto from = m_whole.begin() + place * m_output.channels;
        ASSERT_TRUE(std::equal(block.begin(), block.end(), from)) << place;
    }
    reader->Seek(0, 10, nullptr);
    const size_t before = AllocatedSoFar().blocks;
    for (int blocks = 0; blocks < 8; ++blocks) reader->Read(block.data(), 400, &read, nullptr);
    EXPECT_EQ(AllocatedSoFar().blocks, before);
    EXPECT_EQ(read, 400u);
}

INSTANTIATE_TEST_SUITE_P(Sources, StreamReaderFormats,
                         testing::Values(Source{2, 16, {2, 44100}}, Source{2, 8, {2, 44100}},
                                         Source{2, 16, {2, 48000}}, Source{1, 16, {2, 44100}},
                                         Source{2, 16, {1, 8000}}, Source{1, 8, {2, 48000}},
                                         Source{6, 16, {1, 96000}}, Source{6, 8, {6, 22050}}));

TEST(StreamReader, AnswersWithoutASource) {
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    uint32_t channels = 0;
    uint32_t rate = 0;
    uint32_t number = 0;
    ASSERT_EQ(reader->GetOutputFormat(&channels, &rate, &number), RESULT_OK);
    EXPECT_EQ(std::tuple(channels, rate, number), std::tuple(2u, 44100u, 2u));
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

    const char16_t* const extensions[] = {u"wav", u"aif", u""};
    for (uint32_t i = 0; i < std::size(extensions); ++i) {
        char16_t* text = nullptr;
        EXPECT_EQ(reader->GetExtension(i, &text), i < 2 ? RESULT_OK : RESULT_BAD_EXTENSION);
        EXPECT_EQ(std::u16string(text), extensions[i]);
        reader->Free(text);
    }
}

TEST(StreamReader, TheEndFlagTellsAShortBlockAndClosedReadersKeepTheirAnswers) {
    const ScopedFile file(WavImage().Fmt(1, 2, 44100, 16).Data(Noise(20)).Image());
    const RefPtr<CACStreamReader> reader = NewReader();
    Samples buffer(100, 77);
    for (int turn = 0; turn < 2; ++turn) {
        ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
        for (const auto& [asked, expected, flag] : {std::tuple{4u, 4u, 0}, {50u, 6u, 1}, {1u, 0u, 1}}) {
            uint32_t read = 0;
            uint8_t end = 9;
            EXPECT_EQ(reader->Read(buffer.data(), asked, &read, &end), RESULT_OK);
            EXPECT_EQ(read, expected);
            EXPECT_EQ(end, flag);
        }
        EXPECT_EQ(buffer[99], 77);
        EXPECT_EQ(reader->Close(), RESULT_OK);
        int64_t length = 0;
        EXPECT_EQ(reader->GetLength(&length), RESULT_OK);
        EXPECT_EQ(length, 10);
        uint32_t read = 0;
        EXPECT_EQ(reader->Read(buffer.data(), 2, &read, nullptr), RESULT_FAILED);
    }
}

TEST(StreamReader, AChangeOfOutputKeepsThePlace) {
    const ScopedFile file(Mono(44100).Image());
    const RefPtr<CACStreamReader> reader = NewReader({1, 22050});
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
    const Samples noise = Noise(44100);
    EXPECT_EQ(block, Samples(noise.begin() + 1983, noise.begin() + 2083));
}

TEST(StreamReader, SeeksCountOutputFrames) {
    struct Move {
        uint32_t origin;
        int64_t offset, lands;
        Result result = RESULT_OK;
    };
    const std::vector<Move> direct = {{2, 1000, 44100},
                                      {2, -3, 44097},
                                      {1, -7, 44090},
                                      {3, 0, 100, RESULT_BAD_ARGUMENT},
                                      {0, -1, 0},
                                      {1, 1000, 1000},
                                      {2, -INT64_MAX, 0},
                                      {0, INT64_MAX, 44100},
                                      {1, -9, 44091},
                                      {1, 50000, 44100},
                                      {0, int64_t{1} << 32, 44100}};
    const std::vector<Move> converted = {
        {2, 0, 48000}, {2, -480, 47520},          {1, -20, 47500},   {0, -7, 0},
        {1, -7, 0},    {0, INT64_MAX, INT64_MAX}, {1, 5, INT64_MAX}, {9, 4, 100, RESULT_BAD_ARGUMENT}};
    const ScopedFile file(Mono(44100).Image());
    for (const auto& [rate, moves] : {std::pair(44100u, direct), {48000u, converted}}) {
        const RefPtr<CACStreamReader> reader = NewReader({1, rate});
        ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
        for (const Move& move : moves) {
            int64_t position = 100;
            EXPECT_EQ(reader->Seek(move.origin, move.offset, &position), move.result);
            EXPECT_EQ(position, move.lands) << move.offset << " from " << move.origin;
        }
    }
}

TEST(StreamReader, TakesTheInnerWayByFormatAndExtensionButNotForAStream) {
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
    EXPECT_EQ(open(Mono(2).Image(), ".wav"), RESULT_OK);

    ByteStream deep(WavImage().Fmt(1, 1, 8000, 24).Data({1, 2, 3}).Image());
    EXPECT_EQ(reader->OpenStream(&deep, 0), RESULT_NOT_PCM);
    AudioFormatInfo format{};
    EXPECT_EQ(reader->GetSourceFormat(&format), RESULT_OK);
    EXPECT_EQ(format.bitsPerSample, 24);
    int16_t buffer[100];
    uint32_t read = 0;
    EXPECT_EQ(reader->Read(buffer, 10, &read, nullptr), RESULT_NOT_PCM);
}

TEST(StreamReader, AFailedOpenLeavesNothingToReadAndForgetsTheStream) {
    const RefPtr<CACStreamReader> reader = NewReader();
    int16_t buffer[100];
    uint32_t read = 9;
    ByteStream stream(Mono(100).Image());
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

// A stream's block align is believed as it stands, so buffers must not depend on it.
TEST(StreamReader, BlockAlignsThatContradictTheFormatGiveACode) {
    for (const auto& [align, channels] : {std::pair{0, 0}, {0, 1}, {3, 1}, {60000, 0}, {60000, 1}}) {
        WavImage image = WavImage().Header("fmt ", 16).Word16(1).Word16(static_cast<uint16_t>(channels));
        image.Word32(44100).Word32(0).Word16(static_cast<uint16_t>(align)).Word16(16);
        ByteStream stream(image.Chunk("data", std::string(200000, 'x')).Image());
        const RefPtr<CACStreamReader> reader = NewReader();
        ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
        for (const uint32_t rate : {44100u, 48000u}) {
            reader->SetOutputFormat(static_cast<uint32_t>(channels), rate, 2);
            Samples buffer(64);
            uint32_t read = 0;
            int64_t length = 0;
            EXPECT_EQ(reader->Read(buffer.data(), 32, &read, nullptr), RESULT_NOT_WAVE);
            EXPECT_EQ(reader->GetLength(&length), align == 0 ? RESULT_NOT_WAVE : RESULT_OK);
            reader->Seek(0, 1, nullptr);
        }
    }
}

TEST(StreamReader, AStreamThatFailsOrComesShortAtAnyCallGivesACodeAndNothingStale) {
    const std::string longName(70000, 'n');  // so much is not read before the stream has proved to hold it
    const WavImage tags = None().Chunk("INAM", longName).Chunk("IART", "xy");
    const WavImage image = WavImage().Fmt(1, 1, 44100, 16).Info(tags).Chunk("fact", "1234").Data(Noise(9000));
    for (uint64_t call = 0; call < 120; ++call) {
        const bool fails = call % 2 == 0;
        ByteStream stream(image.Image());
        (fails ? stream.failFromCall : stream.shortCall) = call / 2;
        const RefPtr<CACStreamReader> reader = NewReader({1, 44100});
        if (reader->OpenStream(&stream, 0) != RESULT_OK) {
            EXPECT_LT(call / 2, stream.calls) << "nothing was disturbed";
            continue;
        }
        RefPtr<IAC3Metadata> metadata;
        char16_t* name = nullptr;
        if (call / 2 > stream.calls) {  // all went well
            EXPECT_EQ(reader->GetMetadata(metadata.Put()), RESULT_OK);
            EXPECT_EQ(metadata->GetString(ATTR_TITLE, &name), RESULT_OK);
            EXPECT_EQ(std::u16string(name), std::u16string(longName.size(), u'n'));
            metadata->Free(name);
        }
        // A failure at a chunk's header ends the walk like the end of the file: what
        // isn't reached isn't there.
        int64_t length = 0;
        EXPECT_EQ(reader->GetLength(&length), RESULT_OK);
        EXPECT_TRUE(length == 9000 || length == 0) << call;
        reader->SetOutputFormat(1, 48000, 2);
        Samples block(3000);
        uint32_t read = 1;
        Result result = RESULT_OK;
        while (result == RESULT_OK && read != 0) result = reader->Read(block.data(), 3000, &read, nullptr);
        EXPECT_TRUE(!fails || result == RESULT_NOT_WAVE || stream.calls <= call / 2) << call;
        EXPECT_TRUE(result == RESULT_OK || read == 0) << call;
    }
}

TEST(StreamReader, WithoutMemoryAnOpenGivesACodeAndLeavesNoSource) {
    const ScopedFile file(WavImage().Fmt(1, 2, 48000, 16).Data(Noise(2000)).Image());
    const std::u16string path = file.Wide();
    const RefPtr<CACStreamReader> reader = NewReader();
    Samples block(64);
    uint32_t read = 0;
    const auto read32 = [&] { return reader->Read(block.data(), 32, &read, nullptr); };
    const auto open = [&] { return reader->Open(path.c_str(), OPEN_READ_ONLY); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_CANNOT_OPEN, open, [&] { EXPECT_NE(read32(), RESULT_OK); }),
              RESULT_OK);
    const auto change = [&] { return reader->SetOutputFormat(1, 8000, 2); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, change, [&] { EXPECT_EQ(read32(), RESULT_OK); }),
              RESULT_OK);
}

// Whose reads call the reader that reads from it, on the same thread and on another one.
class MeddlingStream final : public ByteStream {
public:
    using ByteStream::ByteStream;
    HRESULT Read(void* buffer, uint32_t size, uint32_t* done) override {
        if (reader) {
            int64_t frames = 0;
            reader->GetLength(&frames);
            std::jthread([&] { reader->GetLength(&frames); }).join();
            std::jthread([this] { reader->SetLong(ATTR_INFO_ENCODING, INFO_ENCODING_UTF8); }).join();
        }
        return ByteStream::Read(buffer, size, done);
    }
    CACStreamReader* reader = nullptr;
};

TEST(SoleUse, ADebugBuildTellsOfTwoThreadsInOneObjectAndGoesOn) {
    MeddlingStream stream(Mono(8).Image());
    const auto reader = NewReader({1, 44100});
    ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
    int16_t samples[8];
    uint32_t read = 0;
    stream.reader = reader.Get();
    testing::internal::CaptureStderr();
    EXPECT_EQ(reader->Read(samples, 8, &read, nullptr), RESULT_OK);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(read, 8u);
#ifdef NDEBUG
    EXPECT_EQ(told, "");
#else
    EXPECT_EQ(
        told,
        "CACStreamReader: GetLength is called while another thread is in Read: one thread at a time uses "
        "it.\n");
#endif
}

}  // namespace
