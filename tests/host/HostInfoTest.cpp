#include "tests/host/VlwavTest.h"

namespace {

class HostInfo : public VlwavTest {};

TEST_F(HostInfo, TellsFormatAndLengthAtTheSourcesOwnRateAndGoesOnBehindAFileThatFails) {
    WriteWav("a.wav", 1, 8000, 8, 12345);
    WriteWav("locked.wav", 2, 44100, 16, 10);
    std::filesystem::permissions(m_folder / "locked.wav", std::filesystem::perms::owner_read);
    const RunResult run = Vlwav("info a.wav missing.wav locked.wav");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out,
              "a.wav\n  format   8000 Hz, 1 channel, 8 bits\n"
              "  length   12345 frames, 0:01.543\n  reading  directly\n"
              "locked.wav\n  format   44100 Hz, 2 channels, 16 bits\n"
              "  length   10 frames, 0:00.000\n  reading  directly\n");
    EXPECT_EQ(run.err.find("vlwav: missing.wav: No such file or directory"), 0u) << run.err;
}

TEST_F(HostInfo, JsonIsOneArrayAlsoWhenFilesFailOrHaveNamesThatAreNoUtf8) {
    WriteWav("caf\xE9.wav", 2, 48000, 16, 24000);
    WriteBytes("broken.wav", "RIFF but no more");
    const json array = Json("info missing.wav caf\xE9.wav broken.wav");
    ASSERT_EQ(array.size(), 3u);
    EXPECT_EQ(array[0]["reason"], "not-found");
    EXPECT_EQ(array[0]["file"], "missing.wav");
    EXPECT_EQ(array[1]["frames"], 24000);
    EXPECT_EQ(array[1]["seconds"], 0.5);
    EXPECT_EQ(array[1]["direct"], true);
    EXPECT_EQ(array[1]["fileBytes"], "Y2Fm6S53YXY=");
    EXPECT_FALSE(array[2].contains("fileBytes"));
    EXPECT_EQ(array[2]["reason"], "not-audio");
    EXPECT_FALSE(array[2]["error"].get<std::string>().empty());
}

TEST_F(HostInfo, SaysWhichModuleItCouldNotLoad) {
    WriteBytes("other.so", "no library");
    const RunResult bad = Vlwav("info a.wav --module other.so");
    ExpectEnd(bad, 1, "--module");
    EXPECT_EQ(bad.out, "");
}

TEST_F(HostInfo, FormatsAreRowsInTheLanguageThatIsAskedFor) {
    const json array = Json("formats --language PT-br");
    ASSERT_EQ(array.size(), 28u);
    const json wanted = {{"index", 23},
                         {"text", "44,100 kHz, 16 bits, Estéreo"},
                         {"channels", 2},
                         {"rate", 44100},
                         {"bits", 16},
                         {"bytesPerFrame", 4},
                         {"bytesPerSecond", 176400}};
    EXPECT_EQ(array[23], wanted);
    EXPECT_NE(Vlwav("formats --language 1041").out.find("44.100 kHz、16 ビット、ステレオ"),
              std::string::npos);
    for (const char* language : {"en-", "65536"})
        ExpectEnd(Vlwav("formats --language " + std::string(language)), 2, "pt-BR");
}

}  // namespace
