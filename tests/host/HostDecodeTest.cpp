#include "tests/host/VlwavTest.h"

namespace {

class HostDecode : public VlwavTest {};

TEST_F(HostDecode, AtTheSourcesOwnFormatTheBytesAreThoseOfTheFile) {
    const std::string audio = WriteWav("a.wav", 2, 44100, 16, 40000);  // more than two blocks
    EXPECT_EQ(Vlwav("decode a.wav -o a.raw").exitCode, 0);
    EXPECT_TRUE(Bytes("a.raw") == audio);
    EXPECT_TRUE(Vlwav("decode a.wav | cat").out == audio);
}

TEST_F(HostDecode, EightBitSamplesAreWidened) {
    WavImage image;
    image.Fmt(1, 1, 8000, 8).Chunk("data", std::string("\x00\x80\xFF\x81", 4));
    WriteImage("a.wav", image);
    EXPECT_EQ(Vlwav("decode a.wav -o -").out, std::string("\x00\x80\x00\x00\x00\x7F\x00\x01", 8));
}

struct Conversion {
    uint16_t channels;
    uint32_t rate;
    uint16_t bits;
    uint32_t toRate, toChannels;
};

TEST_F(HostDecode, GivesTheFramesThatTheLengthPromises) {
    constexpr uint32_t kFrames = 50000;
    for (const Conversion& c : {Conversion{1, 48000, 16, 44100, 2}, Conversion{2, 44100, 16, 48000, 1},
                                Conversion{2, 44100, 16, 8000, 2}, Conversion{1, 8000, 8, 44100, 1},
                                Conversion{2, 22050, 8, 22050, 1}, Conversion{1, 11025, 16, 48000, 2}}) {
        WriteWav("a.wav", c.channels, c.rate, c.bits, kFrames);
        const RunResult run = Vlwav("decode a.wav -o a.raw --rate " + std::to_string(c.toRate) +
                                    " --channels " + std::to_string(c.toChannels));
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.err, "");
        const auto bytes = static_cast<double>(Bytes("a.raw").size());
        const double wanted = static_cast<double>(kFrames) * c.toRate / c.rate;
        EXPECT_NEAR(bytes / (2 * c.toChannels), wanted, 2 + 1.0 * c.toRate / c.rate)
            << c.rate << " to " << c.toRate;
    }
}

TEST_F(HostDecode, ChannelsThatCannotBeMadeAreRefusedBeforeAnythingIsWritten) {
    WriteWav("a.wav", 2, 44100, 16, 100);
    const RunResult run = Vlwav("decode a.wav --channels 3 -o a.raw");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("3 channels can't be made of 2"), std::string::npos) << run.err;
    EXPECT_EQ(Names(), std::vector<std::string>{"a.wav"});
}

TEST_F(HostDecode, AFileThatFailsLeavesTheOldOutputAlone) {
    WriteBytes("broken.wav", "no wave");
    WriteBytes("a.raw", "precious");
    EXPECT_EQ(Vlwav("decode broken.wav -o a.raw").exitCode, 1);
    EXPECT_EQ(Bytes("a.raw"), "precious");
}

TEST_F(HostDecode, ACutOffFileGivesWhatIsThereWithAWarning) {
    const std::string audio = WriteWav("a.wav", 2, 44100, 16, 1000);
    std::filesystem::resize_file(m_folder / "a.wav", 44 + 400);
    const RunResult run = Vlwav("decode a.wav");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.out == audio.substr(0, 400));
    EXPECT_NE(run.err.find("100 of the promised 1000 frames"), std::string::npos) << run.err;
}

TEST_F(HostDecode, WrongUsageEndsWithTwo) {
    WriteWav("a.wav", 2, 44100, 16, 100);
    for (const char* arguments :
         {"", "unknown", "info", "decode", "info --unknown a.wav", "decode a.wav --rate 0 -o a.raw",
          "decode a.wav --rate 999 -o a.raw", "decode a.wav --rate 4294967297 -o a.raw",
          "decode a.wav --rate fast -o a.raw", "decode a.wav --channels 0 -o a.raw",
          "decode a.wav --channels -1 -o a.raw", "decode a.wav b.wav"}) {
        const RunResult run = Vlwav(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments;
        EXPECT_NE(run.err, "") << arguments;
        EXPECT_EQ(run.out, "") << arguments;
    }
    EXPECT_EQ(Vlwav("--help").exitCode, 0);
    EXPECT_EQ(Vlwav("decode --help").exitCode, 0);
    EXPECT_EQ(Names(), std::vector<std::string>{"a.wav"});
}

}  // namespace
