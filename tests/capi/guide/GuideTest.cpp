// The programs of the guides as their readers run them. Those in C and those in C++ must tell the same.
#include <cmath>
#include <cstdio>
#include <sstream>

#include "riff/ByteOrder.h"
#include "tests/host/Shell.h"

namespace {

class Guide : public ShellTest, public testing::WithParamInterface<std::string> {
protected:
    RunResult Example(const std::string& program, const std::string& arguments) const {
        return Run("'" GUIDE_PATH "/" + GetParam() + "/" + program + "' " + arguments);
    }
    // It did its work, and this is all that it said.
    static void ExpectOutput(const RunResult& run, const std::string& out) {
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out, out);
        EXPECT_EQ(run.err, "");
    }
    // It failed with one sentence, which names what it is about.
    static void ExpectFailure(const RunResult& run, const std::string& told) {
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find(told), std::string::npos) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    }
};

INSTANTIATE_TEST_SUITE_P(In, Guide, testing::Values("c", "cpp"),
                         [](const testing::TestParamInfo<std::string>& row) { return row.param; });

TEST_P(Guide, ListFormatsShowsTheStockFormatsInALanguage) {
    const RunResult japanese = Example("list-formats", "");
    EXPECT_EQ(japanese.err, "");
    std::istringstream lines(japanese.out);
    std::vector<std::string> rows;
    for (std::string line; std::getline(lines, line);) rows.push_back(line);
    ASSERT_EQ(rows.size(), 28U);
    EXPECT_EQ(rows[23], "23  44.100 kHz\u300116 \u30d3\u30c3\u30c8\u3001\u30b9\u30c6\u30ec\u30aa");
    EXPECT_NE(Example("list-formats", "en").out.find("23  44.100 kHz, 16 Bits, Stereo\n"), std::string::npos);
}

int Peak(const Samples& samples) {
    int peak = 0;
    for (const int16_t sample : samples) peak = std::max(peak, std::abs(int{sample}));
    return peak;
}

WavImage Pcm(uint16_t channels, uint32_t rate, const Samples& samples) {
    return WavImage().Fmt(1, channels, rate, 16).Data(samples).Sized();
}

TEST_P(Guide, ReadFileTellsFormatLengthAndPeak) {
    Samples samples = Noise(size_t{2} * 10'000);
    for (int16_t& sample : samples) sample = static_cast<int16_t>(sample / 2);
    samples.back() = -32768;  // in the block that comes with the end
    const std::string image = Pcm(2, 48000, samples).Text();
    WriteBytes("whole.wav", image);
    ExpectOutput(Example("read-file", "whole.wav"),
                 "WAV, PCM, 48000 Hz, 2 channels, 16 bits\n10000 frames, peak 32768\n");
    WriteBytes("cut.wav", image.substr(0, image.size() - 4 * 3000));
    samples.resize(size_t{2} * 7000);
    ExpectOutput(Example("read-file", "cut.wav"),
                 "WAV, PCM, 48000 Hz, 2 channels, 16 bits\n7000 frames, peak " +
                     std::to_string(Peak(samples)) + ", cut off\n");
    ExpectFailure(Example("read-file", "missing.wav"), "missing.wav");
}

TEST_P(Guide, ResampleWritesTheSameToneAtAnotherRate) {
    constexpr double kPi = 3.14159265358979323846, kHertz = 997, kLoud = 12000;
    const auto tone = [&](size_t frame, double rate) {
        return kLoud * std::sin(2 * kPi * kHertz * static_cast<double>(frame) / rate);
    };
    Samples samples;
    for (size_t i = 0; i < 44100; ++i) samples.push_back(static_cast<int16_t>(std::lrint(tone(i, 44100))));
    WriteImage("tone.wav", Pcm(1, 44100, samples));
    const RunResult run = Example("resample", "tone.wav 48000 2 out.raw");
    const std::string raw = Bytes("out.raw");
    const size_t frames = raw.size() / 4;
    ExpectOutput(run, std::to_string(frames) + " frames expected, " + std::to_string(frames) + " written\n");
    EXPECT_NEAR(static_cast<double>(frames), 48000, 1);
    double worst = 0;
    for (size_t i = 100; i + 100 < frames; ++i)
        for (const size_t channel : {size_t{0}, size_t{1}}) {
            const auto* const at = reinterpret_cast<const uint8_t*>(raw.data()) + 4 * i + 2 * channel;
            worst = std::max(worst, std::fabs(static_cast<int16_t>(LoadLE16(at)) - tone(i, 48000)));
        }
    EXPECT_LT(worst, kLoud / 1000);
    ExpectFailure(Example("resample", "tone.wav 1 2 out.raw"), "1");
}

TEST_P(Guide, WriteTaggedMakesAWholeFileWithItsTags) {
    Samples tone;
    for (int i = 0; i < 44100; ++i) tone.push_back(static_cast<int16_t>(160 * (50 - std::abs(i % 100 - 50))));
    ExpectOutput(Example("write-tagged", "a.wav Étude 'North Wind' 1999"), "a.wav: 44100 frames\n");
    const std::string file = Bytes("a.wav");
    const std::string head = WavImage().Fmt(1, 1, 44100, 16).Text().substr(12);
    EXPECT_EQ(LoadLE32(reinterpret_cast<const uint8_t*>(file.data()) + 4), file.size() - 8);
    EXPECT_NE(file.find(head), std::string::npos);
    EXPECT_NE(file.find(WavImage(std::string_view()).Data(tone).Text()), std::string::npos);
    EXPECT_NE(file.find(std::string("INAM\6\0\0\0\xC9tude", 14)), std::string::npos);
    EXPECT_NE(file.find(std::string("IART\v\0\0\0North Wind", 18)), std::string::npos);
    EXPECT_NE(file.find("1999", file.find("ICRD")), std::string::npos);
    ExpectFailure(Example("write-tagged", "a.wav New B 2000"), "a.wav");  // there is such a file
    ExpectFailure(Example("write-tagged", "b.wav New B soon"), "soon");
    EXPECT_EQ(Bytes("a.wav"), file);
    EXPECT_EQ(Names(), std::vector<std::string>{"a.wav"});
}

TEST_P(Guide, EditTagsChangesATagAndNoOtherByte) {
    WavImage image = Pcm(1, 8000, Noise(1000));
    image.Chunk("abcd", "a chunk of another program").Sized();
    const std::string audio = image.Text().substr(12);
    WriteImage("a.wav", image);
    ExpectOutput(Example("edit-tags", "a.wav title First"), "title: First\n");
    ExpectOutput(Example("edit-tags", "a.wav artist Zoë"), "title: First\nartist: Zoë\n");
    ExpectOutput(Example("edit-tags", "a.wav title ''"), "artist: Zoë\n");
    EXPECT_EQ(Bytes("a.wav").substr(12, audio.size()), audio);
    const std::string before = Bytes("a.wav");
    EXPECT_NE(before.find("Zo\xEB"), std::string::npos);
    ExpectFailure(Example("edit-tags", "a.wav tempo 90"), "tempo");
    EXPECT_EQ(Bytes("a.wav"), before);
}

TEST_P(Guide, OwnStreamReadsAFileInsideAnother) {
    const Samples samples = Noise(size_t{2} * 6000);
    const std::string inner = Pcm(2, 44100, samples).Text();
    WriteBytes("archive", std::string(1000, '\x55') + inner + std::string(500, '\x55'));
    double sum = 0;
    for (const int16_t sample : samples) sum += std::abs(sample / 32768.0);
    char expected[64] = "";
    std::snprintf(expected, sizeof expected, "6000 frames, mean level %.4f\n", sum / 12000);
    ExpectOutput(Example("own-stream", "archive 1000 " + std::to_string(inner.size())), expected);
    EXPECT_EQ(Example("own-stream", "archive 900 " + std::to_string(inner.size())).exitCode, 1);
    ExpectFailure(Example("own-stream", "missing 0 100"), "");
}

TEST_P(Guide, FolderLevelsTellsEveryFileInOrderWithManyThreadsOrOne) {
    std::string expected;
    std::filesystem::create_directory(m_folder / "songs");
    for (int i = 0; i < 24; ++i) {
        const Samples samples = Noise(size_t{100} * static_cast<size_t>(i + 1));
        const std::string name = std::string(1, static_cast<char>('a' + i)) + ".wav";
        WriteImage("songs/" + name, Pcm(1, 44100, samples));
        expected += name + ": " + std::to_string(samples.size()) + " frames, peak " +
                    std::to_string(Peak(samples)) + "\n";
    }
    WriteBytes("songs/notes.txt", "no audio");
    ExpectOutput(Example("folder-levels", "songs 8"), expected);
    ExpectOutput(Example("folder-levels", "songs 1"), expected);
    WriteBytes("songs/bad.wav", "no audio");
    const RunResult withBad = Example("folder-levels", "songs");
    ExpectFailure(withBad, "bad.wav");
    EXPECT_EQ(withBad.out, expected);
}

}  // namespace
