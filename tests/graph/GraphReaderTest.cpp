// What the stream reader gives of audio that a graph decodes, and the graph reader by itself.
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <optional>
#include <random>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/graph/CACMWAVReader.h"
#include "AudioCodec/graph/GraphHelpers.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "platform/media/streamreader/RingSize.h"
#include "tests/platform/SystemFaults.h"
#include "tests/platform/media/CommandLine.h"
#include "tests/support/ByteStream.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/Threads.h"
#include "tests/wave/Converted.h"

namespace {

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

Samples ReadAll(IAC3Reader& reader, uint32_t block, uint32_t channels = 2) {
    Samples all;
    for (uint32_t frames = 1; frames != 0;) {
        Samples buffer(size_t{block} * channels);
        uint8_t end = 0;
        EXPECT_EQ(reader.Read(buffer.data(), block, &frames, &end), RESULT_OK);
        all.insert(all.end(), buffer.begin(), buffer.begin() + std::ptrdiff_t{frames} * channels);
    }
    return all;
}

TEST(GraphReader, ForwardsAllOfAReaderThatDecodes) {
    const ScopedFile file(TheRecording().image.Image());
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    reader->SetOutputFormat(1, 8000, 2);  // doesn't reach the inner reader
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
    for (const uint32_t origin : {1U, 2U}) {  // the end is also where it stands: back from there by a second
        EXPECT_EQ(reader->Seek(origin, -static_cast<int64_t>(kRate), &position), RESULT_OK);
        EXPECT_EQ(position, kRate);
        EXPECT_EQ(ReadAll(*reader, 1000),
                  Samples(TheRecording().expected.end() - 2 * kRate, TheRecording().expected.end()));
    }

    EXPECT_EQ(reader->Close(), RESULT_OK);
    EXPECT_EQ(reader->Seek(0, 0, &position), RESULT_FAILED);
    EXPECT_TRUE(ReadAll(*reader, 16).empty());

    // The closed inner reader takes a stream: in order, from its start.
    ByteStream stream(TheRecording().image.Image());
    ASSERT_EQ(reader->OpenStream(&stream, 0), RESULT_OK);
    EXPECT_EQ(ReadAll(*reader, 5000), TheRecording().expected);
    EXPECT_EQ(reader->OpenStream(nullptr, 0), RESULT_BAD_ARGUMENT);
}

TEST(GraphReader, ConvertsWhatItDecodesAsThoughItWerePlain) {
    const ScopedFile plain(WavImage().Fmt(1, 2, kRate, 16).Data(TheRecording().expected).Image());
    const auto direct = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    ASSERT_EQ(direct->Open(plain.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    const Samples expected = ReadAll(*direct, 1000);
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
    for (const uint32_t rate : {44100U, kRate}) {  // without conversion, and with it
        EXPECT_EQ(reader.SetOutputFormat(2, rate, 2), RESULT_OK);
        end = 0;
        EXPECT_EQ(reader.Read(frame, 1, &frames, &end), RESULT_OK);
        EXPECT_EQ(frames, 0U);
        EXPECT_EQ(end, 1);
    }
    EXPECT_EQ(reader.Open(ScopedFile().Wide().c_str(), 0), RESULT_SOURCE_NOT_LOADED);
    const ScopedFile noAudio(std::vector<uint8_t>(5000, 'x'));
    EXPECT_EQ(reader.Open(noAudio.Wide().c_str(), 0), RESULT_SOURCE_NOT_LOADED);
    ByteStream broken({'x'});
    EXPECT_EQ(reader.OpenStream(&broken, 0), RESULT_SOURCE_NOT_LOADED);
}

// Forms whose packets are cut from the file in different ways.
class GraphReaderFaults : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        MakeFile(m_file.Path(), 2, kRate, GetParam(), "1.5");
        m_path = m_file.Wide();
        ASSERT_EQ(m_reader.Open(m_path.c_str(), 0), RESULT_OK);
        ASSERT_EQ(m_reader.SetOutputFormat(2, kRate, 2), RESULT_OK);
        m_whole = ReadAll(m_reader, 1000);
        ASSERT_GT(m_whole.size(), 100000U);
        m_read.resize(m_whole.size() + 2000);
    }

    // Reads what there is into m_read; also where no memory is left.
    Result ReadOn(IAC3Reader& reader) {
        Result result = RESULT_OK;
        m_samples = 0;
        uint32_t frames = 1;
        uint8_t end = 0;
        while (result == RESULT_OK && frames != 0 && m_samples <= m_whole.size()) {
            result = reader.Read(&m_read[m_samples], 1000, &frames, &end);
            if (result == RESULT_OK) m_samples += size_t{frames} * 2;
        }
        m_ended = end != 0;
        return result;
    }
    bool IsWhole() const { return m_samples == m_whole.size() && IsPrefix(); }
    bool IsPrefix() const {
        return m_samples <= m_whole.size() &&
               std::equal(m_whole.begin(), m_whole.begin() + std::ptrdiff_t(m_samples), m_read.begin());
    }

    const ScopedFile m_file;
    std::u16string m_path;
    CACMWAVReader m_reader;
    Samples m_whole, m_read;
    size_t m_samples = 0;
    bool m_ended = false;
};

// What came before it, then the failure until a seek, and then all.
TEST_P(GraphReaderFaults, AReadThatFailsIsNeverTheEnd) {
    constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();
    ByteStream stream(m_file.Bytes());
    for (const bool fromStream : {false, true}) {
        int told = 0;
        for (int call = 0;; ++call) {
            SCOPED_TRACE(call);
            std::optional<WithReadErrors> errors;
            if (!fromStream) errors.emplace(call);
            stream.calls = 0;
            stream.failFromCall = fromStream ? static_cast<uint64_t>(call) : kNever;
            const Result opened =
                fromStream ? m_reader.OpenStream(&stream, 0) : m_reader.Open(m_path.c_str(), 0);
            if (opened != RESULT_OK) {
                EXPECT_EQ(opened, RESULT_SOURCE_NOT_LOADED);
                continue;
            }
            const Result read = ReadOn(m_reader);
            ASSERT_TRUE(IsPrefix());
            if (read == RESULT_OK) break;
            ++told;
            EXPECT_LT(read, 0);
            EXPECT_FALSE(m_ended);
            EXPECT_EQ(ReadOn(m_reader), read);
            EXPECT_EQ(m_samples, 0U);
            errors.reset();
            stream.failFromCall = kNever;
            EXPECT_EQ(m_reader.Seek(0, 0, nullptr), RESULT_OK);
            EXPECT_EQ(ReadOn(m_reader), RESULT_OK);
            ASSERT_TRUE(IsWhole());
        }
        EXPECT_TRUE(IsWhole());
        EXPECT_GT(told, 0);
    }
}

TEST_P(GraphReaderFaults, AnAllocationThatFailsIsNeverTheEnd) {
    m_reader.Close();
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    // One after the other while the graph is built, then some.
    for (int allocations = 0;; allocations += 1 + allocations / 200) {
        SCOPED_TRACE(allocations);
        const FailingAllocation heap(allocations);
        Result result = reader->Open(m_path.c_str(), OPEN_READ_ONLY);
        if (result == RESULT_OK) result = reader->SetOutputFormat(2, kRate, 2);
        for (int turn = 0; turn < 2 && result == RESULT_OK; ++turn) {
            result = ReadOn(*reader);
            ASSERT_TRUE(result == RESULT_OK ? IsWhole() : IsPrefix());
            if (result == RESULT_OK) result = reader->Seek(ORIGIN_START, 0, nullptr);
        }
        reader->Close();
        if (!heap.HasFailed()) break;
    }
    EXPECT_TRUE(IsWhole());
}

// Also where what follows would have come: a stream that has ended doesn't begin again inside a frame.
TEST_P(GraphReaderFaults, AReadOfNothingIsTheEnd) {
    ByteStream stream(m_file.Bytes());
    stream.emptyCall = 4;
    ASSERT_EQ(m_reader.OpenStream(&stream, 0), RESULT_OK);
    for (const bool isFirst : {true, false}) {
        EXPECT_EQ(ReadOn(m_reader), RESULT_OK);
        EXPECT_TRUE(m_ended);
        EXPECT_EQ(m_samples > 1000, isFirst);
        EXPECT_LT(m_samples, m_whole.size());
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, GraphReaderFaults,
                         testing::Values("-c:a pcm_s24le", "-c:a adpcm_ms", "-c:a libmp3lame -b:a 320k"));

TEST(GraphReader, SearchesItsFilterWhereTheHostSays) {
    const ScopedFile file(TheRecording().image.Image());
    CACMWAVReader reader;
    reader.SetBool(ATTR_NO_REGISTERED_FILTER, true);
    EXPECT_EQ(reader.Open(file.Wide().c_str(), 0), RESULT_FILTER_MISSING);
    const auto folder = std::filesystem::path(VL_STREAM_READER).parent_path() / "";
    reader.SetString(ATTR_FILTER_FOLDER, folder.u16string().c_str());
    EXPECT_EQ(reader.Open(file.Wide().c_str(), 0), RESULT_OK);
}

size_t EntriesOf(const char* folder) {
    const auto entries = std::filesystem::directory_iterator(folder);
    return size_t(std::distance(begin(entries), end(entries)));
}

// Two hundred readers on eight threads, each left at any point, with the source still open or not.
TEST(GraphReaderThreads, LeaveNothingBehindWhereverTheyAreLeft) {
    const ScopedFile file;
    MakeFile(file.Path(), 2, kRate, "-c:a adpcm_ima_wav", std::to_string(kRingSize / (kRate * 4) + 2));
    const std::vector<uint8_t> bytes = file.Bytes();
    CACMWAVReader first;  // loads what stays loaded
    ASSERT_EQ(first.Open(file.Wide().c_str(), 0), RESULT_OK);
    first.SetOutputFormat(2, kRate, 2);
    const Samples whole = ReadAll(first, 5000);
    ASSERT_GT(whole.size(), kRingSize / 2);  // what the ring holds
    first.Close();
    const size_t threads = EntriesOf("/proc/self/task");
    const size_t files = EntriesOf("/proc/self/fd");

    const auto useOne = [&](std::mt19937& random, bool fromStream) {
        ByteStream stream(bytes);
        CACMWAVReader reader;
        ASSERT_EQ(fromStream ? reader.OpenStream(&stream, 0) : reader.Open(file.Wide().c_str(), 0),
                  RESULT_OK);
        reader.SetOutputFormat(2, kRate, 2);
        size_t place = 0;  // in samples
        for (auto step = random() % 6; step > 0; --step) {
            if (random() % 2) {
                place = random() % 4 * 2 * kRate;
                EXPECT_EQ(reader.Seek(0, int64_t(place / 2), nullptr), RESULT_OK);
            } else {
                Samples block(2 + random() % 40000 * 2);
                uint32_t frames = 0;
                EXPECT_EQ(reader.Read(block.data(), uint32_t(block.size() / 2), &frames, nullptr), RESULT_OK);
                block.resize(size_t{frames} * 2);
                EXPECT_TRUE(std::equal(block.begin(), block.end(), whole.begin() + std::ptrdiff_t(place)));
                place += block.size();
            }
        }
        if (random() % 2) reader.Close();
    };
    InThreads(8, [&](uint32_t user) {
        std::mt19937 random(user);
        for (int round = 0; round < 25; ++round) useOne(random, round % 2 != 0);
    });
    // A thread that was waited for may stand in the list a moment longer.
    for (int i = 0; i < 1000 && EntriesOf("/proc/self/task") > threads; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_LE(EntriesOf("/proc/self/task"), threads);
    EXPECT_EQ(EntriesOf("/proc/self/fd"), files);
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
    const std::u16string module = std::filesystem::path(VL_STREAM_READER).u16string();
    EXPECT_EQ(AddFilterFromFile(graph.Get(), CLSID_ACMWrapper, module.c_str(), filter.Put(), u"x"),
              CLASS_E_CLASSNOTAVAILABLE);
    ASSERT_EQ(AddFilterFromFile(graph.Get(), CLSID_StreamReader, module.c_str(), filter.Put(), u"x"), S_OK);
    EXPECT_EQ(ConnectFilters(graph.Get(), filter.Get(), filter.Get()), E_FAIL);  // it has no output
    EXPECT_EQ(graph->FindFilterByName(u"y", filter.Put()), VFW_E_NOT_FOUND);
    EXPECT_EQ(graph->FindFilterByName(u"x", filter.Put()), S_OK);
}

}  // namespace
