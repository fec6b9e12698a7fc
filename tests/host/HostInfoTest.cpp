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
              "a.wav\n  codec      PCM in WAV, 8 bits\n  format     8000 Hz, 1 channel (mono)\n"
              "  length     12345 frames, 0:01.543\n"
              "locked.wav\n  codec      PCM in WAV, 16 bits\n  format     44100 Hz, 2 channels (stereo)\n"
              "  length     10 frames, 0:00.000\n");
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

TEST_F(HostInfo, TellsTagsChunksPeaksAndASurroundLayoutInEachForm) {
    std::string audio(12, '\0');
    for (const auto& [place, value] : {std::pair(1, 0x40), {11, 0x80}})
        audio[static_cast<size_t>(place)] = static_cast<char>(value);
    const std::string name = std::string(100, 'n') + "\xE5\xAD\x97.wav";
    WavImage image;
    image.Header("fmt ", 40).FormatRecord(0xFFFE, 6, 48000, 16).Word16(22).Word16(16).Word32(0x60F);
    image.Bytes(std::string_view("\1\0\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 16));
    WriteImage(name, image.Chunk("data", audio).Chunk("odd ", "abc"));
    const json entry = Json("info --peak '" + name + "'")[0];
    EXPECT_EQ(entry["layout"], "5.1");
    EXPECT_EQ(entry["codec"], "PCM");
    EXPECT_EQ(entry["peak"], json({0.5, 0, 0, 0, 0, 1}));
    const json chunk = {{"id", "odd "}, {"offset", 80}, {"size", 3}};
    EXPECT_EQ(entry["chunks"][2], chunk);
    EXPECT_FALSE(Json("info '" + name + "'")[0].contains("peak"));
    const std::string line = Vlwav("info --short '" + name + "'").out;
    EXPECT_EQ(line.size(), 80 + 1 + 2 + 1) << "80 columns, of which one has 3 bytes: " << line;
    EXPECT_TRUE(line.ends_with("0:00.000 48000 Hz 5.1 PCM 16\n")) << line;
    EXPECT_NE(
        Vlwav("info --chunks '" + name + "'").out.find("\"odd \"        at         80,          3 bytes"),
        std::string::npos);
    ASSERT_EQ(Vlwav("tag '" + name + "' --set title=Wind --set year=2001").exitCode, 0);
    EXPECT_EQ(Json("info '" + name + "'")[0]["tags"], json({{"title", "Wind"}, {"year", 2001}}));
    std::string wrong = image.Text();
    wrong[40] = 3;  // a mask of two speakers
    wrong[41] = 0;
    WriteBytes("wrong.wav", wrong);
    EXPECT_EQ(Json("info wrong.wav")[0]["layout"], nullptr);
    for (const auto& [head, kind] : {std::pair("RF64\xFF\xFF\xFF\xFFWAVEds64", "RF64"),
                                     {"\x01\x01\x01 ftypM4A ", "MP4"},
                                     {"\xFF\xFB\x90\x64 and frames", "MP3"}}) {
        WriteBytes("other.wav", head);
        ExpectEnd(Vlwav("info other.wav"), 1, std::string("of the kind ") + kind);
    }
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
