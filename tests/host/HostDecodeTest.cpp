#include "tests/host/VlwavTest.h"

namespace {

class HostDecode : public VlwavTest {};

TEST_F(HostDecode, GivesTheFramesThatTheLengthPromises) {
    WriteWav("a.wav", 1, 48000, 16, 50000);
    for (const auto& [rate, channels] : {std::pair{44100u, 2u}, {8000u, 1u}}) {
        const RunResult run = Vlwav("decode a.wav -o a.raw --rate " + std::to_string(rate) + " --channels " +
                                    std::to_string(channels));
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.err, "");
        EXPECT_NEAR(static_cast<double>(Bytes("a.raw").size()) / (2 * channels), 50000.0 * rate / 48000, 3);
    }
}

TEST_F(HostDecode, WhatFailsLeavesTheOutputAlone) {
    WriteWav("a.wav", 2, 44100, 16, 100);
    WriteBytes("broken.wav", "no wave");
    WriteBytes("a.raw", "precious");
    const auto before = Names();
    ExpectEnd(Vlwav("decode a.wav --channels 3 -o a.raw"), 1, "3 channels can't be made of 2");
    EXPECT_EQ(Vlwav("decode broken.wav -o a.raw").exitCode, 1);
    EXPECT_EQ(Bytes("a.raw"), "precious");
    EXPECT_EQ(Names(), before);
}

TEST_F(HostDecode, ACutOffFileGivesWhatIsThereWithAWarning) {
    const std::string audio = WriteWav("a.wav", 2, 44100, 16, 100000);  // more than two blocks
    std::filesystem::resize_file(m_folder / "a.wav", 44 + 200000);
    const RunResult run = Vlwav("decode a.wav | cat");
    EXPECT_TRUE(run.out == audio.substr(0, 200000));
    ExpectEnd(run, 0, "50000 of the promised 100000 frames");
}

TEST_F(HostDecode, WrongUsageEndsWithTwo) {
    WriteWav("a.wav", 2, 44100, 16, 100);
    for (const char* arguments :
         {"", "info", "info --unknown a.wav", "decode a.wav --rate 999 -o a.raw",
          "decode a.wav --rate 4294967297 -o a.raw", "decode a.wav --channels 0 -o a.raw",
          "decode a.wav b.wav", "decode a.wav --rate fast -o a.raw"}) {
        const RunResult run = Vlwav(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments;
        EXPECT_NE(run.err, "") << arguments;
        EXPECT_EQ(run.out, "") << arguments;
    }
    EXPECT_EQ(Vlwav("decode --help").exitCode, 0);
    EXPECT_EQ(Names(), std::vector<std::string>{"a.wav"});
}

}  // namespace
