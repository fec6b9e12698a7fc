#include <sys/stat.h>

#include "tests/host/VlwavTest.h"

namespace {

// Many files in one command: which of them, where to, and what is told at the end.
class HostBatch : public VlwavTest {
protected:
    void SetUp() override {
        VlwavTest::SetUp();
        for (const char* folder : {"in/a/deep", "in/b"})
            std::filesystem::create_directories(m_folder / folder);
        WriteWav("in/a/one.wav", 1, 8000, 8, 8000);
        WriteWav("in/a/deep/two.WAV", 1, 8000, 8, 4000);
        WriteWav("in/b/[x] caf\xE9.wave", 1, 8000, 8, 4000);
        WriteBytes("in/b/bad.aif", "no form");
        WriteBytes("in/notes.txt", "no audio, and no audio's name");
        std::filesystem::create_directory_symlink("..", m_folder / "in/a/loop");
        mkfifo((m_folder / "in/b/nobody.wav").c_str(), 0600);  // who opens it waits
    }
};

TEST_F(HostBatch, AFolderKeepsItsTreeAndTheSummaryAddsUp) {
    const RunResult run = Vlwav("convert --recursive in -o in/out --json");
    EXPECT_EQ(run.exitCode, 1);
    const json summary = json::parse(run.out);
    EXPECT_EQ(summary["schema"], 1);
    EXPECT_EQ(summary["converted"], 3);
    EXPECT_EQ(summary["skipped"], 0);
    EXPECT_EQ(summary["failed"], 1);
    EXPECT_EQ(summary["seconds"], 2.0);
    EXPECT_GT(summary["realtime"], 0);
    EXPECT_EQ(summary["failures"][0]["file"], "in/b/bad.aif");
    EXPECT_EQ(summary["failures"][0]["reason"], "not-audio");
    EXPECT_EQ(run.err.find("vlwav: in/b/bad.aif: "), run.err.rfind("bad.aif: ") - 12) << "once: " << run.err;
    EXPECT_NE(run.err.find("3 files converted, 1 failed; 0:02.000 of audio in "), std::string::npos)
        << run.err;
    for (const char* made : {"in/out/a/one.wav", "in/out/a/deep/two.wav", "in/out/b/[x] caf\xE9.wav"})
        EXPECT_TRUE(std::filesystem::exists(m_folder / made)) << made;
    // What was made lies in a folder that is walked, and isn't taken for an input.
    std::filesystem::remove(m_folder / "in/b/bad.aif");
    std::filesystem::last_write_time(m_folder / "in/out/a/one.wav",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    const json again = json::parse(Vlwav("convert --recursive in -o in/out --newer --json --quiet").out);
    EXPECT_EQ(again["converted"], 1);
    EXPECT_EQ(again["skipped"], 2);
    EXPECT_EQ(Vlwav("convert in/b -o out").err,
              "vlwav: in/b: It is a folder; with --recursive the files in it are taken.\n");
}

TEST_F(HostBatch, InputsOfOneNameAreToldApartOrRefusedWhileTheRestGoesOn) {
    WriteWav("in/b/one.wav", 1, 8000, 8, 10);
    WriteWav("in/b/two.aif", 1, 8000, 8, 10);
    WriteWav("in/b/two.wav", 1, 8000, 8, 10);
    WriteWav("cut.wav", 1, 8000, 8, 10);
    std::filesystem::resize_file(m_folder / "cut.wav", 50);
    const auto before = Names();
    ExpectEnd(Vlwav("convert cut.wav -o out --dry-run"), 1,
              "It ends early: 6 of 10 promised frames are there. With --partial");
    EXPECT_EQ(Json("convert cut.wav -o out --dry-run --partial")["realtime"], 0);
    const std::string line =
        "convert in/a/one.wav in/b/one.wav in/b/two.aif in/b/two.wav in/a/deep/two.WAV -o out";
    const RunResult dry = Vlwav(line + " --dry-run");
    EXPECT_EQ(dry.out,
              "in/a/one.wav -> out/a/one.wav\nin/b/one.wav -> out/b/one.wav\n"
              "in/a/deep/two.WAV -> out/deep/two.wav\n");
    EXPECT_EQ(Names(), before);
    const RunResult run = Vlwav(line);
    ExpectEnd(run, 1, "vlwav: in/b/two.aif: It and in/b/two.wav would both become out/b/two.wav.");
    ExpectEnd(run, 1, "3 files converted, 2 failed");
    EXPECT_TRUE(std::filesystem::exists(m_folder / "out/b/one.wav"));
    ExpectEnd(Vlwav("convert in/b/one.wav -o out/b --newer"), 0, "0 files converted, 1 up to date.");
}

TEST_F(HostBatch, ListsAndShardsTakeEachFileOnce) {
    std::string list;
    for (int i = 0; i < 40; ++i) {
        const std::string name = "s" + std::to_string(i) + "\n-x.wav";
        WriteWav(name, 1, 8000, 8, 10);
        list += name + '\0';
    }
    WriteBytes("list", list);
    size_t made = 0;
    for (int part = 1; part <= 3; ++part) {
        const std::string shard = std::to_string(part) + "/3";
        const json summary = json::parse(
            Run("'" VLWAV_PATH "' convert --files-from - -o out --json --shard " + shard + " <list").out);
        EXPECT_EQ(summary["failed"], 0) << "a file that another shard made is there already";
        EXPECT_GT(summary["converted"], 4);
        made += summary["converted"].get<size_t>();
    }
    EXPECT_EQ(made, 40u);
    EXPECT_EQ(Vlwav("convert --files-from list -o out --newer --json").exitCode, 0);
    WriteBytes("lines", "in/a/one.wav\n\nin/missing.wav\n");
    ExpectEnd(Vlwav("convert --files-from lines -o out"), 1,
              "vlwav: in/missing.wav: No such file or directory");
    ExpectEnd(Vlwav("convert in/a/one.wav --shard 2/2 -o elsewhere/"), 0, "");
    ExpectEnd(Vlwav("convert -o out"), 2, "No file is given");
}

}  // namespace
