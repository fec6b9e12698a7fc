// Output that can't be delivered, interrupted work, and outputs that must not be touched.
#include <sys/stat.h>

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
    for (const char* line :
         {"info a.wav >/dev/full", "info a.wav >&-", "info --json a.wav >/dev/full", "info a.wav 1</dev/null",
          "decode a.wav >/dev/full", "decode a.wav >&-", "decode a.wav -o /dev/full",
          "decode a.wav -o nowhere/a.raw", "--help >/dev/full", "--version >&-", "decode a.wav -o ."}) {
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

TEST_F(HostOutput, ADeviceIsWrittenAndNotReplaced) {
    EXPECT_EQ(Vlwav("decode a.wav -o /dev/null").exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
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
         {"decode a.wav -o a.wav", "decode a.wav -o ./link.wav", "decode link.wav -o a.wav",
          "decode a.wav -o hard.wav", "decode a.wav >>a.wav"}) {
        const RunResult run = Vlwav(line);
        EXPECT_EQ(run.exitCode, 1) << line;
        EXPECT_NE(run.err.find("the input itself"), std::string::npos) << line << ": " << run.err;
        EXPECT_TRUE(Bytes("a.wav") == before) << line;
    }
    EXPECT_EQ(Names(), (std::vector<std::string>{"a.wav", "hard.wav", "link.wav"}));
}

TEST_F(HostOutput, AReplacedFileKeepsItsModeAndItsLink) {
    WriteBytes("real.raw", "old");
    ASSERT_EQ(chmod((m_folder / "real.raw").c_str(), 0640), 0);
    std::filesystem::create_symlink("real.raw", m_folder / "link.raw");
    EXPECT_EQ(Vlwav("decode a.wav -o link.raw").exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder / "link.raw"));
    EXPECT_TRUE(Bytes("real.raw") == m_audio);
    struct stat status {};
    ASSERT_EQ(stat((m_folder / "real.raw").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(HostOutput, InterruptedWorkSaysSoAndLeavesNothing) {
    for (const char* name : {"1.wav", "2.wav", "3.wav"}) WriteLongWav(name);
    std::filesystem::create_directory(m_folder / "out");
    const auto before = Names();
    for (const char* work :
         {"decode 1.wav --rate 44101 -o a.raw", "convert 1.wav 2.wav 3.wav --rate 48000 --jobs 3 -o out"})
        for (const char* name : {"TERM", "INT", "HUP"}) {
            const RunResult run =
                Run("timeout --preserve-status -s " + std::string(name) + " 0.5 '" VLWAV_PATH "' " + work);
            EXPECT_EQ(run.exitCode, 1) << work;
            EXPECT_NE(run.err.find("Interrupted by SIG" + std::string(name)), std::string::npos) << run.err;
            EXPECT_EQ(Names(), before) << work;
            EXPECT_TRUE(std::filesystem::is_empty(m_folder / "out")) << work;
        }
}

TEST_F(HostOutput, ATerminalGetsAHintInsteadOfRawAudio) {
    if (Run("command -v script").exitCode != 0) GTEST_SKIP() << "no script(1) to make a terminal with";
    const RunResult run = Run("script -qec \"'" VLWAV_PATH "' decode a.wav\" /dev/null");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.out.find("name a file with -o"), std::string::npos) << run.out;
}

}  // namespace
