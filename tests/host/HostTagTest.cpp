#include "tests/host/VlwavTest.h"

namespace {

class HostTag : public VlwavTest {
protected:
    // One second, and an "INFO" list of one chunk in front of what follows.
    void WriteTagged(const std::string& id, std::string_view content, std::string_view after = "") const {
        WavImage image = WavImage().Fmt(1, 1, 8000, 8).Chunk("data", std::string(8000, 'x'));
        WriteImage("a.wav", image.Info(None().Chunk(id, content)).Bytes(after));
    }
};

TEST_F(HostTag, SettingOneTagLeavesTheOthersAndTheAudio) {
    const std::string audio = WriteWav("a.wav", 2, 44100, 16, 1001);
    EXPECT_EQ(Vlwav("tag a.wav").out, "a.wav\n  no tags\n");
    const RunResult run = Vlwav(
        "tag --set title='5 € ' --set COMPOSER=作曲家 --set Performer=Ann --set track=7 "
        "--set month=012 --set comment=a=b a.wav");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              "a.wav\n  title      5 €\n  artist     Ann\n  composer   作曲家\n  comment    a=b\n"
              "  track      7\n  month      12\n");
    const json wanted = {
        {"title", "5 €"}, {"artist", "Ann"}, {"album", "North"}, {"composer", "作曲家"}, {"track", 7}};
    EXPECT_EQ(Json("tag a.wav --set album=North --clear comment --clear MONTH")[0]["tags"], wanted);
    EXPECT_TRUE(Bytes("a.wav").substr(44, audio.size()) == audio);
    EXPECT_EQ(Bytes("a.wav").find("ICMT"), std::string::npos);
}

TEST_F(HostTag, NamesAndNumbersThatCannotBeTouchNothing) {
    WriteTagged("INAM", "Song");
    const std::string before = Bytes("a.wav");
    const std::pair<const char*, const char*> rows[] = {
        {"--set nonsense=1", "no tag named \"nonsense\"; the names are title,"},
        {"--clear ''", "no tag named"},
        {"--clear mediaid", "can't keep the tag MediaID"},
        {"--set year=1x", "must be a number"},
        {"--set track=2147483648", "must be a number"},
        {"--set title", "no NAME=VALUE"}};
    for (const auto& [option, reason] : rows)
        ExpectEnd(Vlwav("tag a.wav --set album=x " + std::string(option)), 2, reason);
    EXPECT_TRUE(Bytes("a.wav") == before);
}

TEST_F(HostTag, AFileThatCannotBeChangedFailsAndTheOthersGoOn) {
    WriteWav("locked.wav", 1, 8000, 8, 11);
    std::filesystem::permissions(m_folder / "locked.wav", std::filesystem::perms::owner_read);
    WriteWav("wide.wav", 1, 8000, 24, 11);
    WriteWav("cut.wav", 1, 8000, 16, 100);
    std::filesystem::resize_file(m_folder / "cut.wav", 100);
    WriteImage("late.wav", WavImage().Chunk("bext", "xx").Fmt(1, 1, 8000, 16).Data({1, 2, 3}));
    const RunResult run =
        Vlwav("tag --json --set genre=Folk locked.wav missing.wav wide.wav cut.wav late.wav");
    for (const char* line : {"locked.wav: Permission denied", "missing.wav: No such file"})
        ExpectEnd(run, 1, line);
    const json array = json::parse(run.out);
    ASSERT_EQ(array.size(), 5u);
    EXPECT_EQ(array[1]["reason"], "not-found");
    for (const size_t good : {size_t{2}, size_t{3}, size_t{4}})
        EXPECT_EQ(array[good]["tags"], (json{{"genre", "Folk"}}));
}

TEST_F(HostTag, WhatAnId3ChunkStillTellsIsNotToldAsCleared) {
    const std::string frame("TPE1\0\0\0\4\0\0\0Ann", 14);
    WriteTagged("INAM", "Song", "id3 \x18" + std::string("\0\0\0ID3\3\0\0\0\0\0\x0E", 13) + frame);
    ASSERT_EQ(Json("tag a.wav")[0]["tags"], (json{{"title", "Song"}, {"artist", "Ann"}}));
    ExpectEnd(Vlwav("tag a.wav --clear artist"), 1, "artist is still told by its chunk \"id3 \"");
    EXPECT_EQ(Vlwav("tag a.wav --clear title --set artist=Zoe").exitCode, 0);
    EXPECT_EQ(Json("tag a.wav")[0]["tags"], (json{{"artist", "Zoe"}}));
}

TEST_F(HostTag, TagsAbove64MiBAreRefusedBeforeAnythingIsMade) {
    constexpr uint32_t kHuge = 65 << 20;
    WavImage image = WavImage().Fmt(1, 1, 8000, 8).Data({1}).Header("LIST", kHuge);
    WriteImage("a.wav", image.Bytes("INFO").Header("INAM", kHuge - 12));
    ASSERT_EQ(Run("truncate -s 66M a.wav").exitCode, 0);
    for (const char* command : {"tag a.wav", "tag a.wav --set title=x", "convert a.wav -o b.wav"}) {
        ExpectEnd(Vlwav(command), 1, "more than 64 MiB");
        EXPECT_NE(Run("test -e b.wav").exitCode, 0) << command;
    }
}

TEST_F(HostTag, TagsGoOutAsJsonAndComeBackFromItOrFromAnotherFile) {
    for (const char* name : {"a.wav", "caf\xE9.wav", "c.wav"}) WriteWav(name, 1, 8000, 24, 10);
    ASSERT_EQ(Vlwav("tag a.wav --set title=\"Été\" --set year=1999 --set genre=Folk").exitCode, 0);
    ASSERT_EQ(Vlwav("tag caf\xE9.wav --set title=Two").exitCode, 0);
    ASSERT_EQ(Vlwav("tag a.wav caf\xE9.wav --export list.json").exitCode, 0);
    ExpectEnd(Vlwav("tag a.wav --export list.json"), 1, "list.json is there already");
    json list = json::parse(Bytes("list.json"));
    EXPECT_EQ(list[0]["tags"], json({{"title", "Été"}, {"year", 1999}, {"genre", "Folk"}}));
    list[0]["tags"] = {{"title", "Hiver"}, {"year", nullptr}};
    list[1]["tags"]["track"] = 7;
    WriteBytes("list.json", list.dump());
    ASSERT_EQ(Run("'" VLWAV_PATH "' tag --import - <list.json").exitCode, 0);
    EXPECT_EQ(Json("tag a.wav")[0]["tags"], json({{"title", "Hiver"}, {"genre", "Folk"}}));
    EXPECT_EQ(Json("tag caf\xE9.wav")[0]["tags"], json({{"title", "Two"}, {"track", 7}}));
    const RunResult other = Vlwav("tag a.wav c.wav --import list.json --quiet");
    ExpectEnd(other, 1, "vlwav: c.wav: The list has no entry for it.");
    WriteBytes("bad.json", "[{\"file\": \"a.wav\", \"tags\": {\"title\": [1]}}]");
    ExpectEnd(Vlwav("tag --import bad.json"), 1, "Entry 1 of the list");
    // Also to itself, and twice.
    ASSERT_EQ(Vlwav("tag a.wav c.wav ./c.wav --from a.wav").exitCode, 0);
    ASSERT_EQ(Vlwav("tag c.wav --set genre=Jazz").exitCode, 0);
    EXPECT_EQ(Json("tag c.wav")[0]["tags"], json({{"title", "Hiver"}, {"genre", "Jazz"}}));
}

TEST_F(HostTag, AListIsWrittenAnewInUtf8WhereThatIsAskedFor) {
    WriteWav("a.wav", 1, 8000, 8, 10);
    ASSERT_EQ(Vlwav("tag a.wav --set artist=Zoë").exitCode, 0);
    EXPECT_NE(Bytes("a.wav").find("Zo\xEB"), std::string::npos);
    ASSERT_EQ(Vlwav("--encoding utf-8 tag a.wav --set title=x").exitCode, 0);
    EXPECT_NE(Bytes("a.wav").find("Zoë"), std::string::npos);
    EXPECT_EQ(Json("tag a.wav")[0]["tags"], json({{"title", "x"}, {"artist", "Zoë"}}));
    EXPECT_EQ(Vlwav("tag a.wav --encoding latin").exitCode, 2);
    EXPECT_EQ(Vlwav("decode a.wav --encoding utf-8").exitCode, 2);
}

}  // namespace
