#include <nlohmann/json.hpp>

#include "tests/host/VlwavTest.h"

namespace {

class HostInfo : public VlwavTest {};

TEST_F(HostInfo, TellsFormatAndLengthAtTheSourcesOwnRate) {
    WriteWav("a.wav", 1, 8000, 8, 12345);
    const RunResult run = Vlwav("info a.wav");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out,
              "a.wav\n  format   8000 Hz, 1 channel, 8 bits\n"
              "  length   12345 frames, 0:01.543\n  reading  directly\n");
    EXPECT_EQ(run.err, "");
}

TEST_F(HostInfo, JsonIsOneArrayAlsoWhenFilesFailOrHaveNamesThatAreNoUtf8) {
    WriteWav("caf\xE9.wav", 2, 48000, 16, 24000);
    WriteBytes("broken.wav", "RIFF but no more");
    const RunResult run = Vlwav("info --json missing.wav caf\xE9.wav broken.wav");
    EXPECT_EQ(run.exitCode, 1);
    const auto array = nlohmann::json::parse(run.out);
    ASSERT_EQ(array.size(), 3u);
    EXPECT_EQ(array[0]["error"]["code"], 1000);
    EXPECT_EQ(array[0]["file"], "missing.wav");
    EXPECT_EQ(array[1]["frames"], 24000);
    EXPECT_EQ(array[1]["seconds"], 0.5);
    EXPECT_EQ(array[1]["direct"], true);
    EXPECT_EQ(array[2]["error"]["code"], 1003);
    EXPECT_FALSE(array[2]["error"]["message"].get<std::string>().empty());
}

TEST_F(HostInfo, GoesOnBehindAFileThatFails) {
    WriteWav("good.wav", 2, 44100, 16, 10);
    const RunResult run = Vlwav("info missing.wav good.wav");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find("good.wav\n  format   44100 Hz, 2 channels, 16 bits\n"), std::string::npos);
    EXPECT_EQ(run.err.find("vlwav: missing.wav: The file could not be opened"), 0u) << run.err;
}

TEST_F(HostInfo, AWriteProtectedFileIsReadAllTheSame) {
    WriteWav("a.wav", 2, 44100, 16, 10);
    std::filesystem::permissions(m_folder / "a.wav", std::filesystem::perms::owner_read);
    EXPECT_EQ(Vlwav("info a.wav").exitCode, 0);
}

TEST_F(HostInfo, SaysWhichModuleItTookAndWhichItCouldNotLoad) {
    WriteWav("a.wav", 2, 44100, 16, 10);
    const RunResult good = Vlwav("info a.wav --verbose");
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_NE(good.err.find("/VlACWav3.so\n"), std::string::npos) << good.err;
    WriteBytes("other.so", "no library");
    for (const char* module : {"other.so", "missing.so"}) {
        const RunResult bad = Vlwav(std::string("info a.wav --module ") + module);
        EXPECT_EQ(bad.exitCode, 1);
        EXPECT_NE(bad.err.find("--module"), std::string::npos) << bad.err;
        EXPECT_EQ(bad.out, "");
    }
}

}  // namespace
