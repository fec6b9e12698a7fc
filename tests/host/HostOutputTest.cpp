// Output that can't be delivered, interrupted work, and outputs that must not be touched.
#include <csignal>

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

// Whether the text has what steers a terminal or turns its lines around; ends of lines are its own.
bool Steers(const std::string& text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte < 0x20 && byte != '\n') || byte == 0x7F) return true;
    }
    for (const char* mark : {"\xC2\x9B", "\xD8\x9C", "\xE2\x80\x8F", "\xE2\x80\xAE", "\xE2\x81\xA7"})
        if (text.find(mark) != text.npos) return true;
    return false;
}

TEST_F(HostOutput, NothingInANameOrATagSteersTheTerminal) {
    const std::string bad = "\x1B[31m\x7F\xC2\x9B\xD8\x9C\xE2\x80\x8F\xE2\x80\xAE\xE2\x81\xA7";
    const std::string lines = bad + "\nvlwav: ";
    const std::string name = "a" + lines + "\x9B.wav";
    WriteBytes(name, Bytes("a.wav"));
    const std::string good = "'" + name + "'";
    const std::string missing = "'no" + lines + "\xE9'";
    for (const std::string& line :
         {"info " + good + " " + missing, "info --json " + good + " " + missing,
          "tag " + good + " --set title='" + bad + "'", "tag --json " + good,
          "convert " + good + " -o b" + good, "convert " + good + " -o b" + good,
          "convert " + good + " " + good + " -o .", "compare " + good + " a.wav",
          "compare --json " + good + " " + missing, "plot " + missing + " -o x",
          "decode " + good + " -o " + good, "decode a.wav -o no/" + good, "picture " + missing + " -o x",
          "info --" + missing, "formats --language " + missing, "tag a.wav --set " + missing,
          "info a.wav --verbose --module " + missing}) {
        SCOPED_TRACE(line);
        const RunResult run = Vlwav(line);
        EXPECT_FALSE(Steers(run.out)) << run.out;
        EXPECT_FALSE(Steers(run.err)) << run.err;
        EXPECT_EQ(run.err.find("\nvlwav: ."), run.err.npos) << run.err;  // the name's own line
    }
    EXPECT_EQ(Json("tag " + good)[0]["tags"]["title"], bad);
    EXPECT_EQ(Json("info " + good)[0]["fileBytes"], "YRtbMzFtf8Kb2JzigI/igK7igacKdmx3YXY6IJsud2F2");
}

TEST_F(HostOutput, AFullClosedOrBrokenOutputIsNeverASuccess) {
    for (const char* line : {"info a.wav >/dev/full", "info --json a.wav >&-", "info a.wav 1</dev/null",
                             "decode a.wav >&-", "decode a.wav -o /dev/full", "decode a.wav -o nowhere/a.raw",
                             "--help >/dev/full", "decode a.wav -o ."}) {
        SCOPED_TRACE(line);
        ExpectEnd(Vlwav(line), 1, "Writing to ");
    }
    EXPECT_EQ(Names(), std::vector<std::string>{"a.wav"});
}

TEST_F(HostOutput, AReaderThatGoesAwayIsAFailureWithAReason) {
    const RunResult run = Run("{ '" VLWAV_PATH "' decode a.wav; echo $? >code; } | head -c 1");
    EXPECT_EQ(Bytes("code"), "1\n");
    EXPECT_NE(run.err.find("Writing to standard output failed"), std::string::npos) << run.err;
}

TEST_F(HostOutput, WhatIsThereAndTheInputItselfStayAsTheyAre) {
    std::filesystem::create_symlink("a.wav", m_folder / "link.wav");
    std::filesystem::create_hard_link(m_folder / "a.wav", m_folder / "hard.wav");
    WriteBytes("broken.wav", "no wave");
    WriteBytes("out.wav", "precious");
    const std::string before = Bytes("a.wav");
    const auto names = Names();
    ExpectEnd(Vlwav("convert a.wav -o out.wav"), 1, "out.wav is there already");
    ExpectEnd(Vlwav("decode a.wav -o out.wav"), 1, "out.wav is there already");
    ExpectEnd(Vlwav("decode a.wav --channels 3 -o out.wav"), 1, "3 channels can't be made of 2");
    ExpectEnd(Vlwav("decode broken.wav -o out.wav"), 1, "broken.wav");
    EXPECT_EQ(Bytes("out.wav"), "precious");
    for (const char* line : {"decode a.wav -o ./link.wav", "decode link.wav -o hard.wav",
                             "decode a.wav >>a.wav", "convert --overwrite a.wav -o link.wav",
                             "convert --overwrite a.wav -o .", "convert --overwrite link.wav -o a.wav"}) {
        SCOPED_TRACE(line);
        ExpectEnd(Vlwav(line), 1, "the input itself");
        EXPECT_TRUE(Bytes("a.wav") == before);
    }
    EXPECT_EQ(Vlwav("convert a.wav -o /dev/null --overwrite").exitCode, 0);
    EXPECT_EQ(Names(), names);
}

TEST_F(HostOutput, InterruptedWorkSaysSoAndLeavesNothing) {
    // They take long to read and hardly any room: an hour of silence in a hole of the disk.
    for (const char* name : {"1.wav", "2.wav", "3.wav"}) {
        WriteImage(name, WavImage().Fmt(1, 2, 44100, 16).Header("data", 600000000));
        std::filesystem::resize_file(m_folder / name, 44 + 600000000);
    }
    std::filesystem::create_directory(m_folder / "out");
    const auto before = Names();
    // A signal ends the program as one, so that a shell's loop around it ends too.
    const struct {
        const char* name;
        int number;
        const char* work;
    } rows[] = {{"TERM", SIGTERM, "convert 1.wav 2.wav 3.wav --rate 48000 --jobs 3 -o out"},
                {"HUP", SIGHUP, "decode 1.wav --rate 44101 -o out/a.raw"}};
    for (const auto& [name, number, work] : rows) {
        // Where a file has no name before it is whole, the program's own table tells that it is open.
        const std::string begun =
            "for i in $(seq 300); do ls -lA out /proc/$!/fd | grep -q /out/ && break; sleep 0.1; done";
        const RunResult run =
            Run("'" VLWAV_PATH "' " + std::string(work) + " & " + begun + "; kill -" + name + " $!; wait $!");
        ExpectEnd(run, 128 + number, "Interrupted by SIG" + std::string(name));
        EXPECT_EQ(Names(), before) << work;
    }
}

TEST_F(HostOutput, ATerminalGetsAHintInsteadOfRawAudio) {
    if (Run("command -v script").exitCode != 0) GTEST_SKIP() << "no script(1) to make a terminal with";
    const RunResult run = Run("script -qec \"'" VLWAV_PATH "' decode a.wav\" /dev/null");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.out.find("name a file with -o"), std::string::npos) << run.out;
}

class HostDecode : public VlwavTest {};

TEST_F(HostDecode, ACutOffFileGivesWhatIsThereAndFails) {
    const std::string audio = WriteWav("a.wav", 2, 44100, 16, 100000);  // more than two blocks
    const RunResult whole = Vlwav("decode a.wav --rate 48000 --channels 1");
    EXPECT_EQ(whole.err, "");
    EXPECT_NEAR(static_cast<double>(whole.out.size()) / 2, 100000.0 * 48000 / 44100, 3);
    std::filesystem::resize_file(m_folder / "a.wav", 44 + 200000);
    const RunResult run = Vlwav("decode a.wav | cat");
    EXPECT_TRUE(run.out == audio.substr(0, 200000));
    EXPECT_NE(run.err.find("50000 of 100000 promised frames are there"), std::string::npos) << run.err;
}

TEST_F(HostDecode, WrongUsageEndsWithTwo) {
    WriteWav("a.wav", 2, 44100, 16, 100);
    for (const char* arguments :
         {"", "info", "info --unknown a.wav", "decode a.wav --rate 999 -o a.raw",
          "decode a.wav --rate 4294967297 -o a.raw", "decode a.wav --channels 0 -o a.raw",
          "decode a.wav b.wav", "decode a.wav --rate fast -o a.raw", "decode a.wav -o ''"}) {
        const RunResult run = Vlwav(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments;
        EXPECT_NE(run.err, "") << arguments;
        EXPECT_EQ(run.out, "") << arguments;
    }
    ExpectEnd(Vlwav("--quie"), 2, "\"vlwav\" has no option --quie; did you mean --quiet?");
    EXPECT_EQ(Vlwav("decode --help").exitCode, 0);
    EXPECT_EQ(Names(), std::vector<std::string>{"a.wav"});
}

}  // namespace
