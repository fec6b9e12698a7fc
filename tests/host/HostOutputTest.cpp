// Output that can't be delivered, interrupted work, and outputs that must not be touched.
#include "tests/host/VlwavTest.h"

namespace {

class HostOutput : public VlwavTest {
protected:
    void SetUp() override {
        VlwavTest::SetUp();
        m_audio = WriteWav("a.wav", 2, 44100, 16, 200000);
    }
    std::string m_audio;
};

TEST_F(HostOutput, AFullClosedOrBrokenOutputIsNeverASuccess) {
    for (const char* line : {"info a.wav >/dev/full", "info --json a.wav >&-", "info a.wav 1</dev/null",
                             "decode a.wav >&-", "decode a.wav -o /dev/full", "decode a.wav -o nowhere/a.raw",
                             "--help >/dev/full", "decode a.wav -o ."}) {
        const RunResult run = Vlwav(line);
        EXPECT_EQ(run.exitCode, 1) << line;
        EXPECT_NE(run.err.find("Writing to "), std::string::npos) << line << ": " << run.err;
    }
    EXPECT_EQ(Names(), std::vector<std::string>{"a.wav"});
}

TEST_F(HostOutput, AReaderThatGoesAwayIsAFailureWithAReason) {
    const RunResult run = Run("{ '" VLWAV_PATH "' decode a.wav; echo $? >code; } | head -c 1");
    EXPECT_EQ(Bytes("code"), "1\n");
    EXPECT_NE(run.err.find("Writing to standard output failed"), std::string::npos) << run.err;
}

TEST_F(HostOutput, ADiskThatFillsUpLeavesNothingBehind) {
    const RunResult run = Run("ulimit -f 100; trap '' XFSZ; '" VLWAV_PATH "' decode a.wav -o a.raw");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("Writing to a.raw failed"), std::string::npos) << run.err;
    EXPECT_EQ(Names(), std::vector<std::string>{"a.wav"});
}

TEST_F(HostOutput, TheInputIsNeverItsOwnOutput) {
    std::filesystem::create_symlink("a.wav", m_folder / "link.wav");
    std::filesystem::create_hard_link(m_folder / "a.wav", m_folder / "hard.wav");
    const std::string before = Bytes("a.wav");
    for (const char* line :
         {"decode a.wav -o ./link.wav", "decode link.wav -o hard.wav", "decode a.wav >>a.wav"}) {
        const RunResult run = Vlwav(line);
        EXPECT_EQ(run.exitCode, 1) << line;
        EXPECT_NE(run.err.find("the input itself"), std::string::npos) << line << ": " << run.err;
        EXPECT_TRUE(Bytes("a.wav") == before) << line;
    }
    EXPECT_EQ(Names(), (std::vector<std::string>{"a.wav", "hard.wav", "link.wav"}));
}

TEST_F(HostOutput, AReplacedFileKeepsItsModeAndItsLinkAndADeviceIsNotReplaced) {
    WriteBytes("real.raw", "old");
    std::filesystem::permissions(m_folder / "real.raw", std::filesystem::perms{0640});
    std::filesystem::create_symlink("real.raw", m_folder / "link.raw");
    EXPECT_EQ(Vlwav("decode a.wav -o link.raw").exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder / "link.raw"));
    EXPECT_TRUE(Bytes("real.raw") == m_audio);
    EXPECT_EQ(Run("stat -c %a real.raw").out, "640\n");
    EXPECT_EQ(Vlwav("decode a.wav -o /dev/null").exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(HostOutput, InterruptedWorkSaysSoAndLeavesNothing) {
    // They take long to read and hardly any room: an hour of silence in a hole of the disk.
    for (const char* name : {"1.wav", "2.wav", "3.wav"}) {
        WriteImage(name, WavImage().Fmt(1, 2, 44100, 16).Header("data", 600000000));
        std::filesystem::resize_file(m_folder / name, 44 + 600000000);
    }
    std::filesystem::create_directory(m_folder / "out");
    const auto before = Names();
    for (const auto& [name, work] :
         {std::pair{"TERM", "convert 1.wav 2.wav 3.wav --rate 48000 --jobs 3 -o out"},
          {"HUP", "decode 1.wav --rate 44101 -o out/a.raw"}}) {
        const std::string begun = "for i in $(seq 300); do ls -A out | grep -q . && break; sleep 0.1; done";
        const RunResult run =
            Run("'" VLWAV_PATH "' " + std::string(work) + " & " + begun + "; kill -" + name + " $!; wait $!");
        EXPECT_EQ(run.exitCode, 1) << work;
        EXPECT_NE(run.err.find("Interrupted by SIG" + std::string(name)), std::string::npos) << run.err;
        EXPECT_EQ(Names(), before) << work;
    }
}

TEST_F(HostOutput, ATerminalGetsAHintInsteadOfRawAudio) {
    if (Run("command -v script").exitCode != 0) GTEST_SKIP() << "no script(1) to make a terminal with";
    const RunResult run = Run("script -qec \"'" VLWAV_PATH "' decode a.wav\" /dev/null");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.out.find("name a file with -o"), std::string::npos) << run.out;
}

}  // namespace
