// What the stream reader gives of audio that a graph decodes, and the graph reader by itself.
#include <gtest/gtest.h>

#include <random>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/graph/CACMWAVReader.h"
#include "AudioCodec/graph/GraphHelpers.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "tests/support/ByteStream.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

using Samples = std::vector<int16_t>;

constexpr uint32_t kRate = 48000;
constexpr size_t kFrames = 100000;

// Stereo of 24 bits, and what it is in 16: to nearest, ties up, clipped.
struct Recording {
    WavImage image;
    Samples expected;

    Recording() {
        std::mt19937 random(5);
        std::string bytes;
        for (size_t i = 0; i < kFrames * 2; ++i) {
            const auto sample = static_cast<int32_t>(random()) >> 8;
            for (int shift = 0; shift < 24; shift += 8) bytes += static_cast<char>(sample >> shift);
            expected.push_back(static_cast<int16_t>(std::min((sample + 128) >> 8, 32767)));
        }
        image.Fmt(1, 2, kRate, 24).Chunk("data", bytes);
    }
};
const Recording& TheRecording() {
    static const Recording s_recording;
    return s_recording;
}

Samples ReadAll(IAC3Reader& reader, uint32_t block) {
    Samples all;
    for (uint32_t frames = 1; frames != 0;) {
        Samples buffer(size_t{block} * 2);
        uint8_t end = 0;
        EXPECT_EQ(reader.Read(buffer.data(), block, &frames, &end), RESULT_OK);
        all.insert(all.end(), buffer.begin(), buffer.begin() + std::ptrdiff_t{frames} * 2);
    }
    return all;
}

TEST(GraphReader, ForwardsAllOfAReaderThatDecodes) {
    const ScopedFile file(TheRecording().image.Image());
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    uint32_t channels = 0;
    uint32_t rate = 0;
    uint32_t bytes = 0;
    EXPECT_EQ(reader->GetOutputFormat(&channels, &rate, &bytes), RESULT_OK);
    EXPECT_EQ(rate, 44100U);
    EXPECT_EQ(reader->SetOutputFormat(2, kRate, 4), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(reader->SetOutputFormat(2, kRate, 2), RESULT_OK);
    int64_t length = 0;
    EXPECT_EQ(reader->GetLength(&length), RESULT_OK);
    EXPECT_EQ(length, 2 * kRate);  // whole seconds of 2.083
    AudioFormatInfo format{};
    EXPECT_EQ(reader->GetSourceFormat(&format), RESULT_NOT_SUPPORTED);
    IAC3Metadata* metadata = nullptr;
    EXPECT_EQ(reader->GetMetadata(&metadata), RESULT_NOT_SUPPORTED);
    EXPECT_EQ(ReadAll(*reader, 777), TheRecording().expected);

    int64_t position = 0;
    EXPECT_EQ(reader->Seek(0, kRate + 20000, &position), RESULT_OK);
    EXPECT_EQ(position, kRate);
    const Samples rest = ReadAll(*reader, 4096);
    EXPECT_EQ(rest, Samples(TheRecording().expected.begin() + 2 * kRate, TheRecording().expected.end()));
    EXPECT_EQ(reader->Seek(2, -static_cast<int64_t>(kRate), &position), RESULT_OK);
    EXPECT_EQ(position, kRate);

    EXPECT_EQ(reader->Close(), RESULT_OK);
    EXPECT_EQ(reader->Seek(0, 0, &position), RESULT_FAILED);
    EXPECT_TRUE(ReadAll(*reader, 16).empty());

    // The closed inner reader takes a stream: in order, from its start.
    ByteStream stream(TheRecording().image.Image());
    ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
    EXPECT_EQ(ReadAll(*reader, 5000), TheRecording().expected);
    EXPECT_EQ(reader->OpenStream(nullptr, 0), RESULT_BAD_ARGUMENT);
}

TEST(GraphReader, ConvertsWhatItDecodesAsTheConverterDoes) {
    CSampleRateConverter converter;
    converter.Configure(2, kRate, 2, 44100);
    converter.ResetToOutputPosition(0);
    Samples expected(kFrames * 2 + 1000);
    auto taken = static_cast<uint32_t>(kFrames);
    auto made = static_cast<uint32_t>(expected.size() / 2);
    converter.Process(TheRecording().expected.data(), &taken, expected.data(), &made);
    uint32_t none = 0;
    auto tail = static_cast<uint32_t>(expected.size() / 2 - made);
    converter.Process(nullptr, &none, expected.data() + size_t{made} * 2, &tail);
    expected.resize(size_t{made + tail} * 2);

    const ScopedFile file(TheRecording().image.Image());
    CACMWAVReader reader;
    for (int turn = 0; turn < 2; ++turn) {  // an open on an open reader closes it first
        ASSERT_EQ(reader.Open(file.Wide().c_str(), 0), RESULT_OK);
        EXPECT_EQ(ReadAll(reader, 1000), expected);
    }
}

TEST(GraphReader, FailuresGiveTheirCodes) {
    CACMWAVReader reader;
    int16_t frame[2] = {};
    uint32_t frames = 7;
    uint8_t end = 0;
    EXPECT_EQ(reader.Read(frame, 1, &frames, &end), RESULT_OK);
    EXPECT_EQ(frames, 0U);
    EXPECT_EQ(end, 1);
    EXPECT_EQ(reader.Open(ScopedFile().Wide().c_str(), 0), RESULT_SOURCE_NOT_LOADED);
    const ScopedFile noAudio(std::vector<uint8_t>(5000, 'x'));
    EXPECT_EQ(reader.Open(noAudio.Wide().c_str(), 0), RESULT_SOURCE_NOT_LOADED);
    ByteStream broken({'x'});
    EXPECT_EQ(reader.OpenStream(&broken, 0), RESULT_SOURCE_NOT_LOADED);
    EXPECT_EQ(reader.Close(), RESULT_OK);
    char16_t* extension = nullptr;
    EXPECT_EQ(reader.GetExtension(2, &extension), RESULT_BAD_EXTENSION);
    ASSERT_TRUE(extension);
    EXPECT_EQ(extension[0], u'\0');
    reader.Free(extension);
}

TEST(GraphHelpers, RefuseWhatIsMissing) {
    RefPtr<IGraphBuilder> graph;
    RefPtr<IMediaControl> control;
    RefPtr<IMediaSeeking> seeking;
    EXPECT_EQ(CreateFilterGraph(graph.Put(), nullptr, seeking.Put()), E_FAIL);
    ASSERT_EQ(CreateFilterGraph(graph.Put(), control.Put(), seeking.Put()), S_OK);
    RefPtr<IBaseFilter> filter;
    EXPECT_EQ(AddFilterFromFile(graph.Get(), CLSID_StreamReader, u"/nowhere/x.ax", filter.Put(), u"x"),
              E_INVALIDARG);
    ASSERT_EQ(AddFilterByCLSID(graph.Get(), CLSID_StreamReader, filter.Put(), u"x"), S_OK);
    EXPECT_EQ(ConnectFilters(graph.Get(), static_cast<IPin*>(nullptr), filter.Get()), E_POINTER);
    EXPECT_EQ(ConnectFilters(graph.Get(), filter.Get(), filter.Get()), E_FAIL);  // it has no output
    RefPtr<IPin> pin;
    EXPECT_EQ(GetUnconnectedPin(filter.Get(), PINDIR_INPUT, pin.Put()), S_OK);
}

}  // namespace
