#include <gtest/gtest.h>

#include <random>

#include "tests/platform/media/CommandLine.h"
#include "tests/platform/media/Graph.h"
#include "tests/support/ScopedFile.h"

namespace {

struct Codec {
    const char* name;
    const char* extension;
    int channels;
    int rate;
    const char* options;
    bool isWide = false;  // whole numbers of more than 16 bits
};
void PrintTo(const Codec& codec, std::ostream* out) { *out << codec.name; }
const Codec kCodecs[] = {
    {"Pcm16Extensible", ".wav", 3, 44100, "-c:a pcm_s16le"},
    {"Pcm24Extensible8Channels", ".wav", 8, 192000, "-c:a pcm_s24le", true},
    {"Float32PlainTag", ".wav", 2, 48000, "-f f32le - | sox -V1 -t f32 -r 48000 -c 2 -"},
    {"Float64", ".wav", 1, 22050, "-c:a pcm_f64le"},
    {"Gsm", ".wav", 1, 8000, "-c:a libgsm_ms"},
    {"Mp3", ".wav", 2, 44100, "-c:a libmp3lame"},
    {"Rf64", ".wav", 1, 44100, "-c:a pcm_s24le -rf64 always", true},
    {"AifcPcm8Unsigned", ".aif", 2, 11025, "-c:a pcm_u8"},
    {"AiffPcm32", ".aif", 1, 44100, "-c:a pcm_s32be", true},
    {"AifcFloat32", ".aif", 2, 44100, "-c:a pcm_f32be"},
    {"AifcFloat64", ".aif", 1, 44100, "-c:a pcm_f64be"},
    {"AifcALaw", ".aif", 1, 8000, "-c:a pcm_alaw"},
    {"AifcIma", ".aif", 2, 44100, "-c:a adpcm_ima_qt"},
};

class DecodeGraph : public testing::TestWithParam<Codec> {
protected:
    void SetUp() override {
        const auto& [name, extension, channels, rate, options, isWide] = GetParam();
        MakeFile(m_file.Path(), channels, rate, options,
                 std::to_string(std::min(2.0, 150000.0 / rate / channels)));
    }

    // A graph over the file, or over its bytes in order.
    Graph Opened(bool inOrder) {
        Graph graph;
        const auto source = Make<SequentialSource>(m_file.Bytes());
        source->atMost = 10007;
        EXPECT_EQ(inOrder ? graph.Open(*source) : graph.Open(m_file.Wide()), S_OK);
        return graph;
    }

    static void CheckSeeks(Graph& graph, const std::vector<int16_t>& straight);

    const ScopedFile m_file{GetParam().extension};
};

TEST_P(DecodeGraph, GivesWhatAnotherDecoderGivesFromAnyPlace) {
    const std::vector<int16_t> expected =
        GetParam().isWide ? RoundedFromFFmpeg(m_file.Path()) : DecodedByFFmpeg(m_file.Path());
    ASSERT_GT(expected.size(), 7000U);
    for (const bool inOrder : {false, true}) {
        SCOPED_TRACE(inOrder);
        Graph graph = Opened(inOrder);
        EXPECT_EQ(graph.channels, uint32_t(GetParam().channels));
        EXPECT_EQ(graph.rate, uint32_t(GetParam().rate));
        EXPECT_EQ(graph.bits, 16U);
        LONGLONG duration = 0;
        EXPECT_EQ(graph.seeking->GetDuration(&duration), S_OK);
        EXPECT_NEAR(double(duration) / 1e7, double(expected.size()) / graph.channels / graph.rate, 0.1);
        ASSERT_EQ(graph.control->Run(), S_OK);
        const std::vector<int16_t> straight = graph.ReadAll();
        ASSERT_EQ(straight, expected);
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

// Damage before the block costs frames where it is decoded too.
TEST(DecodeSeeks, GoToTheirBlockWhateverComesBeforeIt) {
    for (const char* const options :
         {"-c:a adpcm_ima_wav", "-c:a adpcm_ms", "-c:a adpcm_ima_wav -block_size 256"}) {
        const ScopedFile file;
        MakeFile(file.Path(), 2, 44100, options, "1");
        const std::vector<int16_t> straight = DecodedByFFmpeg(file.Path());
        std::vector<uint8_t> bytes = file.Bytes();
        const std::string_view data = "data";
        const auto audio = std::search(bytes.begin(), bytes.end(), data.begin(), data.end()) + 8;
        std::fill(audio, audio + 9000, uint8_t{0xFF});
        file.Write(bytes);
        for (const bool inOrder : {false, true}) {
            Graph graph;
            ASSERT_EQ(inOrder ? graph.Open(*Make<SequentialSource>(bytes)) : graph.Open(file.Wide()), S_OK);
            ASSERT_EQ(graph.control->Run(), S_OK);
            for (const int64_t frame : {30001, 20000, 40999}) {
                ASSERT_EQ(graph.SeekToFrame(frame), S_OK);
                EXPECT_EQ(graph.ReadAll(), std::vector(straight.begin() + frame * 2, straight.end()))
                    << options;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Codecs, DecodeGraph, testing::ValuesIn(kCodecs),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(DecodeFailures, AudioOfWhichNothingCanBeDecodedIsNoEmptyFile) {
    for (const char* const options : {"-c:a libmp3lame", "-c:a adpcm_ms"}) {
        const ScopedFile file;
        MakeFile(file.Path(), 1, 8000, options);
        std::vector<uint8_t> bytes = file.Bytes();
        const std::string_view data = "data";
        const auto audio = std::search(bytes.begin(), bytes.end(), data.begin(), data.end()) + 8;
        std::fill(audio, bytes.end(), uint8_t{0xFF});
        file.Write(bytes);
        Graph graph;
        ASSERT_EQ(graph.Open(file.Wide()), S_OK);
        graph.control->Run();
        EXPECT_EQ(graph.ReadAll().size(), 0U) << options;
        EXPECT_EQ(graph.readResult, VFW_E_INVALID_FILE_FORMAT) << options;
    }
}

void ExpectDecoded(const ScopedFile& file, const std::vector<int16_t>& expected) {
    Graph graph;
    ASSERT_EQ(graph.Open(file.Wide()), S_OK);
    graph.control->Run();
    EXPECT_EQ(graph.ReadAll(), expected);
}

// Only a source that honours positions can be read so.
TEST(DecodeAiff, ReadsAFileWhoseHeadComesLast) {
    const ScopedFile file(".aif");
    MakeFile(file.Path(), 2, 44100, "-c:a pcm_s24be", "1");
    const std::vector<int16_t> expected = RoundedFromFFmpeg(file.Path());
    std::vector<uint8_t> bytes = file.Bytes();
    constexpr std::ptrdiff_t kForm = 12, kComm = 8 + 18;
    ASSERT_EQ(std::memcmp(bytes.data() + kForm, "COMM", 4), 0);
    std::rotate(bytes.begin() + kForm, bytes.begin() + kForm + kComm, bytes.end());
    file.Write(bytes);
    ExpectDecoded(file, expected);
}

TEST(DecodeAiff, TakesLittleEndianSamplesUnderEveryTagThatTheyHave) {
    for (const int bits : {24, 32}) {
        const ScopedFile source;
        MakeFile(source.Path(), 2, 44100, "-c:a pcm_s" + std::to_string(bits) + "le", "1");
        const std::vector<int16_t> expected = RoundedFromFFmpeg(source.Path());
        const ScopedFile file(".aif");
        OutputOf("sndfile-convert -endian=little -pcm" + std::to_string(bits) + " '" +
                 source.Path().string() + "' '" + file.Path().string() + "'");
        for (const bool withUsualTag : {false, true}) {
            std::vector<uint8_t> bytes = file.Bytes();
            const std::string_view own = bits == 24 ? "42n1" : "23ni", usual = "sowt";
            const auto tag = std::search(bytes.begin(), bytes.end(), own.begin(), own.end());
            ASSERT_NE(tag, bytes.end());
            if (withUsualTag) std::copy(usual.begin(), usual.end(), tag);
            ExpectDecoded(ScopedFile(bytes, ".aif"), expected);
        }
    }
}

}  // namespace
