#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

#include "tests/platform/TempFolder.h"
#include "tests/platform/media/CommandLine.h"
#include "tests/platform/media/Graph.h"

namespace {

struct Codec {
    const char* name;
    const char* file;
    int channels;
    int rate;
    const char* options;
    int tolerance;  // steps of 16 bits: wider samples are rounded here and cut off there
};
const Codec kCodecs[] = {
    {"Pcm24", "a.wav", 2, 44100, "-c:a pcm_s24le", 1},
    {"Pcm24Extensible8Channels", "a.wav", 8, 192000, "-c:a pcm_s24le", 1},
    {"Pcm32", "a.wav", 1, 8000, "-c:a pcm_s32le", 1},
    {"Float32", "a.wav", 2, 48000, "-c:a pcm_f32le", 1},
    {"Float64", "a.wav", 1, 22050, "-c:a pcm_f64le", 1},
    {"ALaw", "a.wav", 2, 8000, "-c:a pcm_alaw", 0},
    {"MuLaw", "a.wav", 1, 11025, "-c:a pcm_mulaw", 0},
    {"ImaAdpcm", "a.wav", 2, 44100, "-c:a adpcm_ima_wav", 0},
    {"MsAdpcm", "a.wav", 2, 44100, "-c:a adpcm_ms", 0},
    {"Gsm", "a.wav", 1, 8000, "-c:a libgsm_ms", 1},
    {"Mp3", "a.wav", 2, 44100, "-c:a libmp3lame", 1},
    {"Rf64", "a.wav", 1, 44100, "-c:a pcm_s24le -rf64 always", 1},
    {"AiffPcm8", "a.aif", 1, 8000, "-c:a pcm_s8", 0},
    {"AiffPcm16", "a.aif", 2, 44100, "-c:a pcm_s16be", 0},
    {"AiffPcm24", "a.aif", 3, 96000, "-c:a pcm_s24be", 1},
    {"AiffPcm32", "a.aif", 1, 44100, "-c:a pcm_s32be", 1},
    {"AifcPcm16LittleEndian", "a.aif", 2, 44100, "-c:a pcm_s16le", 0},
    {"AifcFloat32", "a.aif", 2, 44100, "-c:a pcm_f32be", 1},
    {"AifcFloat64", "a.aif", 1, 44100, "-c:a pcm_f64be", 1},
    {"AifcALaw", "a.aif", 1, 8000, "-c:a pcm_alaw", 0},
    {"AifcMuLaw", "a.aif", 2, 8000, "-c:a pcm_mulaw", 0},
    {"AifcIma", "a.aif", 2, 44100, "-c:a adpcm_ima_qt", 0},
};

std::vector<uint8_t> BytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int LargestDifference(const std::vector<int16_t>& a, const std::vector<int16_t>& b) {
    int largest = a.size() == b.size() ? 0 : 65536;
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

class DecodeGraph : public testing::TestWithParam<Codec> {
protected:
    void SetUp() override {
        const auto& [name, file, channels, rate, options, tolerance] = GetParam();
        MakeFile(m_path, channels, rate, options, std::to_string(std::min(2.0, 150000.0 / rate / channels)));
    }

    // A graph over the file, or over its bytes in order.
    Graph Opened(bool inOrder) {
        Graph graph;
        const auto source = Make<SequentialSource>(BytesOf(m_path));
        source->atMost = 10007;
        EXPECT_EQ(inOrder ? graph.Open(*source) : graph.Open(m_folder.Wide(GetParam().file)), S_OK);
        return graph;
    }

    static void CheckSeeks(Graph& graph, const std::vector<int16_t>& straight);

    TempFolder m_folder;
    const std::string m_path = m_folder.Native(GetParam().file);
};

TEST_P(DecodeGraph, GivesWhatAnotherDecoderGivesFromAnyPlace) {
    const std::vector<int16_t> expected = DecodedByFFmpeg(m_path);
    ASSERT_GT(expected.size(), 7000U);
    for (const bool inOrder : {false, true}) {
        Graph graph = Opened(inOrder);
        EXPECT_EQ(graph.channels, uint32_t(GetParam().channels));
        EXPECT_EQ(graph.rate, uint32_t(GetParam().rate));
        EXPECT_EQ(graph.bits, 16U);
        LONGLONG duration = 0;
        EXPECT_EQ(graph.seeking->GetDuration(&duration), S_OK);
        EXPECT_NEAR(double(duration) / 1e7, double(expected.size()) / graph.channels / graph.rate, 0.1);
        ASSERT_EQ(graph.control->Run(), S_OK);
        const std::vector<int16_t> straight = graph.ReadAll();
        EXPECT_LE(LargestDifference(straight, expected), GetParam().tolerance) << "in order: " << inOrder;
        SCOPED_TRACE(inOrder);
        CheckSeeks(graph, straight);
    }
}

void DecodeGraph::CheckSeeks(Graph& graph, const std::vector<int16_t>& straight) {
    std::mt19937 random(1);
    const auto frames = int64_t(straight.size() / graph.channels);
    const auto anywhere = [&] { return int64_t(random()) % frames; };
    for (const int64_t frame : {frames - 1, int64_t{0}, anywhere(), frames + 1000, anywhere(), anywhere()}) {
        ASSERT_EQ(graph.SeekToFrame(frame), S_OK);
        EXPECT_EQ(graph.CurrentFrame(), frame);
        const size_t skipped = size_t(std::min(frame, frames)) * graph.channels;
        const size_t count = std::min(straight.size() - skipped, size_t{30000} * graph.channels);
        ASSERT_EQ(graph.Read(count), std::vector(straight.begin() + std::ptrdiff_t(skipped),
                                                 straight.begin() + std::ptrdiff_t(skipped + count)))
            << "frame " << frame;
        EXPECT_EQ(graph.CurrentFrame(), frame + int64_t(count / graph.channels));
    }
    EXPECT_EQ(graph.SeekToFrame(-1), E_INVALIDARG);
}

// No hang, no crash, and an end for all that opens.
TEST_P(DecodeGraph, EndsForFilesThatAreCutOrDamaged) {
    const std::vector<uint8_t> whole = BytesOf(m_path);
    const auto start = std::chrono::steady_clock::now();
    std::mt19937 random(2);
    for (int round = 0; round < 24; ++round) {
        std::vector<uint8_t> bytes = whole;
        if (round % 3 == 0) bytes.resize(round < 12 ? random() % 100 : random() % whole.size());
        for (int i = 0; round % 3 != 0 && i < 20; ++i) {
            const size_t reach = round % 3 == 1 ? std::min<size_t>(80, bytes.size()) : bytes.size();
            bytes[random() % reach] = uint8_t(random());
        }
        const auto source = Make<SequentialSource>(bytes);
        Graph graph;
        if (FAILED(graph.Open(*source))) continue;
        EXPECT_EQ(graph.control->Run(), S_OK);
        if (round % 2) graph.SeekToFrame(int64_t(random() % 30000));
        graph.ReadAll();
        EXPECT_EQ(graph.readResult, S_OK);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

INSTANTIATE_TEST_SUITE_P(Codecs, DecodeGraph, testing::ValuesIn(kCodecs),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(DecodeRounding, TakesTheNearestValueTiesUpAndClips) {
    const TempFolder folder;
    const int32_t in[] = {0x7FFFFFFF, 0x7FFF8000, 0x7FFF7FFF, 0x00008000,
                          0x00007FFF, -0x8000,    -0x8001,    INT32_MIN};
    const std::vector<int16_t> out = {32767, 32767, 32767, 1, 0, 0, -1, -32768};
    std::ofstream(folder.Native("raw"), std::ios::binary)
        .write(std::bit_cast<const char*>(&in[0]), sizeof(in));
    OutputOf("ffmpeg -v error -f s32le -ar 8000 -ac 1 -i '" + folder.Native("raw") + "' -c:a pcm_s32le '" +
             folder.Native("a.wav") + "'");
    Graph graph;
    ASSERT_EQ(graph.Open(folder.Wide("a.wav")), S_OK);
    graph.control->Run();
    EXPECT_EQ(graph.ReadAll(), out);
}

// Only a source that honours positions can be read so.
TEST(DecodeAiff, ReadsAFileWhoseHeadComesLast) {
    const TempFolder folder;
    MakeFile(folder.Native("a.aif"), 2, 44100, "-c:a pcm_s24be", "1");
    std::vector<uint8_t> bytes = BytesOf(folder.Native("a.aif"));
    constexpr std::ptrdiff_t kForm = 12, kComm = 8 + 18;
    ASSERT_EQ(std::memcmp(bytes.data() + kForm, "COMM", 4), 0);
    std::rotate(bytes.begin() + kForm, bytes.begin() + kForm + kComm, bytes.end());
    std::ofstream(folder.Native("b.aif"), std::ios::binary)
        .write(std::bit_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    Graph graph;
    ASSERT_EQ(graph.Open(folder.Wide("b.aif")), S_OK);
    graph.control->Run();
    EXPECT_LE(LargestDifference(graph.ReadAll(), DecodedByFFmpeg(folder.Native("a.aif"))), 1);
}

}  // namespace
