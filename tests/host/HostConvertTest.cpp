#include "tests/host/VlwavTest.h"

namespace {

class HostConvert : public VlwavTest {};
class HostConvertThreads : public HostConvert {};

// Every rate goes with every kind in one table; these rows are of each kind, and from both of its ends.
TEST_F(HostConvert, OtherProgramsReadStockFormatsAsTheyWereMeant) {
    WriteWav("in.wav", 2, 44100, 16, 44100);
    const json formats = Json("formats");
    for (const size_t index : {0u, 9u, 18u, 27u}) {
        const json& row = formats[index];
        const std::string options = " --overwrite --set title=Lied --format " + std::to_string(index);
        EXPECT_EQ(Vlwav("convert in.wav -o out.wav" + options)
                      .out.find("in.wav -> out.wav: " + row["text"].get<std::string>() + ", "),
                  0u);
        const std::string told =
            Run("for what in c r b s; do soxi -$what out.wav; done; sndfile-info out.wav").out;
        const std::string shape =
            row["channels"].dump() + "\n" + row["rate"].dump() + "\n" + row["bits"].dump();
        ASSERT_EQ(told.find(shape + "\n"), 0u) << told;
        EXPECT_NEAR(std::stod(told.substr(shape.size())), row["rate"].get<double>(), 2) << index;
        for (const std::string& line :
             {"Channels    : " + row["channels"].dump(), "Sample Rate : " + row["rate"].dump(),
              std::string("INAM : Lied"), "Bit Width     : " + row["bits"].dump()})
            EXPECT_NE(told.find(line), std::string::npos) << line << told;
    }
}

TEST_F(HostConvert, WhatIsNotAskedForIsTheNearestToTheSource) {
    struct Source {
        uint16_t channels;
        uint32_t rate;
        uint16_t bits;
        const char* text;
    };
    const std::pair<const char*, std::vector<Source>> rows[] = {
        {"",
         {{6, 44100, 16, "44.100 kHz, 16 Bits, Mono, 0:00.200 (6 channels → mono)"},
          {2, 192000, 16, "48.000 kHz, 16 Bits, Stereo, 0:00.200 (192000 → 48000 Hz)"},
          {2, 70000, 8, "48.000 kHz, 8 Bits, Stereo, 0:00.200 (70000 → 48000 Hz)"},
          {1, 27025, 8, "32.000 kHz, 8 Bits, Mono, 0:00.199"}}},
        {" --bits 16 --channels 2",
         {{1, 12000, 8, "11.025 kHz, 16 Bits, Stereo, 0:00.200 (12000 → 11025 Hz)"}}},
        {" --rate 32000", {{2, 48000, 16, "32.000 kHz, 16 Bits, Stereo, 0:00.200 (48000 → 32000 Hz)"}}}};
    std::filesystem::create_directory(m_folder / "out");
    for (const auto& [options, sources] : rows) {
        std::string files;
        std::string wanted;
        for (const Source& source : sources) {
            const std::string name = std::to_string(source.rate) + ".wav";
            WriteWav(name, source.channels, source.rate, source.bits, source.rate / 5);
            files += name + " ";
            wanted += name + " -> out/" + name + ": " + source.text + "\n";
        }
        EXPECT_EQ(Vlwav("convert --jobs 1 --overwrite -o out " + files + options).out, wanted);
    }
}

TEST_F(HostConvert, RefusesWhatIsNoStockFormatOrWouldCollideBeforeAnythingIsWritten) {
    WriteWav("a.wav", 2, 44100, 16, 100);
    WriteWav("a.aif", 2, 44100, 16, 100);
    std::filesystem::create_directory(m_folder / "out");
    const auto before = Names();
    const std::pair<const char*, const char*> rows[] = {{"out --rate 44101", "possible are 8000, 11025"},
                                                        {"out --format 28", "No format has --format 28"},
                                                        {"out --format 1 --bits 8", "excludes"},
                                                        {"out --set disc=1", "can't keep the tag disc"},
                                                        {"out --jobs 0", "--jobs"},
                                                        {"song.mp3", "song.mp3 has an ending"},
                                                        {"out --shard 3/2", "is no shard"},
                                                        {"file.wav a.aif", "file.wav is no folder"}};
    for (const auto& [arguments, reason] : rows)
        ExpectEnd(Vlwav("convert a.wav -o " + std::string(arguments)), 2, reason);
    EXPECT_EQ(Names(), before);
}

// The first file takes longest, and is told of first all the same.
TEST_F(HostConvertThreads, ManyFilesAtOnceAndOneBadAmongThem) {
    const auto frames = [](uint32_t i) { return i == 0 ? 400000 : 5000 + i; };
    std::filesystem::create_directory(m_folder / "out");
    std::string names;
    for (uint32_t i = 0; i < 12; ++i) {
        const std::string name = "f" + std::to_string(i) + ".wav";
        WriteWav(name, 2, 44100, 16, frames(i));
        names += name + " ";
    }
    WriteBytes("bad.wav", "no wave");
    WriteWav("five.wav", 5, 44100, 16, 10);
    const RunResult run =
        Run("umask 027; '" VLWAV_PATH "' convert --channels 2 -o out --jobs 5 bad.wav five.wav " + names +
            "; code=$?; stat -c %a out/f0.wav; exit $code");
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 13) << run.out;
    size_t told = 0;
    for (uint32_t i = 0; i < 12; ++i) {
        const std::string line = "f" + std::to_string(i) + ".wav -> out/";
        EXPECT_EQ(run.out.compare(told, line.size(), line), 0) << i << '\n' << run.out;
        told = run.out.find('\n', told) + 1;
    }
    EXPECT_NE(run.out.find("\n640\n"), std::string::npos) << "what the shell would have given a new file";
    ExpectEnd(run, 1, "vlwav: bad.wav: It is no WAV or AIFF file");
    ExpectEnd(run, 1, "vlwav: five.wav: 2 channels can't be made of 5");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder / "out"), {}), 12);
    for (uint32_t i = 0; i < 12; ++i)
        EXPECT_EQ(Bytes("out/f" + std::to_string(i) + ".wav").size(), 44 + 4 * frames(i));
}

TEST_F(HostConvert, WhatTheOutputLacksIsNamed) {
    WavImage list = None().Chunk("ISFT", "tool").Chunk("INAM", "Name");
    list.Chunk("ICRD", "2001-05-06").Chunk("IARL", {"12\0", 3});
    list.Chunk("vltg", TagEntry("composer", "A") + TagEntry("Nonesuch", "B") + TagEntry("disc", "1") + '\0');
    WavImage image = WavImage().Fmt(1, 1, 8000, 16).Chunk("bext", "x").Chunk("JUNK", "x").Data({1, 2, 3});
    WriteImage("in.wav", image.Chunk("cue ", "abcd").Chunk("LIST", "adtlxxxx").Info(list));
    const auto before = Names();
    ExpectEnd(Vlwav("convert in.wav -o out.wav"), 1,
              "disc would become nothing instead of \"1\". With --lossy");
    EXPECT_EQ(Names(), before);
    const RunResult run = Vlwav("convert in.wav -o out.wav --lossy");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(
        run.err,
        "vlwav: in.wav: Note: the output doesn't have \"-05-06\" of the date, text \"ISFT\", tag disc, tag "
        "nonesuch.\n");
    const json tags = {{"title", "Name"}, {"composer", "A"}, {"track", 12}, {"year", 2001}};
    EXPECT_EQ(Json("tag out.wav")[0]["tags"], tags);
    ASSERT_EQ(Run("sox out.wav plain.aiff").exitCode, 0);  // with a comment of its own
    std::string form = Bytes("plain.aiff") + std::string("ANNO\0\0\0\2xxANNO\0\0\0\2yy", 20);
    form[7] = static_cast<char>(form.size() - 8);
    WriteBytes("in.aiff", form);
    EXPECT_EQ(Vlwav("convert in.aiff -o out.wav --overwrite").err,
              "vlwav: in.aiff: Note: the output doesn't have \"COMT\", a further \"ANNO\".\n");
}

// In each case a whole file, one that holds less than its head tells, and heads that tell nothing.
TEST_F(HostConvert, LengthIsWhatTheFileHolds) {
    WriteWav("whole.wav", 2, 44100, 16, 20000);
    WriteWav("cut.wav", 2, 44100, 16, 20000);
    std::filesystem::resize_file(m_folder / "cut.wav", 44 + 4 * 5000);
    std::string bytes = Bytes("whole.wav");
    WriteBytes("crashed.wav", bytes.replace(40, 4, 4, '\0'));
    WriteBytes("piped.wav", bytes.replace(40, 4, 4, '\xFF'));
    ASSERT_EQ(Run("ffmpeg -loglevel error -i whole.wav -c:a libmp3lame mp3.wav && head -c 6000 mp3.wav "
                  ">cutmp3.wav")
                  .exitCode,
              0);
    std::filesystem::create_directory(m_folder / "out");
    for (const char* name : {"cut", "cutmp3"}) {
        SCOPED_TRACE(name);
        const std::string file = std::string(name) + ".wav";
        EXPECT_NE(Vlwav("info " + file).out.find("; cut off, "), std::string::npos);
        for (const std::string command : {"convert ", "decode "}) {
            const auto before = Names();
            const RunResult refused = Vlwav(command + file + " -o out/made.wav");
            ExpectEnd(refused, 1, "promised ");
            ExpectEnd(refused, 1, "With --partial");
            EXPECT_EQ(Names(), before);
            ExpectEnd(Vlwav(command + file + " -o out/made.wav --partial"), 0, "promised ");
            EXPECT_EQ(Run("rm out/made.wav").exitCode, 0);
        }
        EXPECT_EQ(Vlwav("decode " + file).exitCode, 1);
    }
    for (const std::string name : {"crashed.wav", "piped.wav"}) {
        ExpectEnd(Vlwav("convert " + name + " -o out"), 0, "Note: its head tells no length");
        EXPECT_TRUE(Bytes("out/" + name).substr(40) == Bytes("whole.wav").substr(40)) << name;
        ExpectEnd(Vlwav("decode " + name + " -o raw --overwrite"), 0, "Note: its head tells no length");
        EXPECT_TRUE(Bytes("raw") == bytes.substr(44)) << name;
        EXPECT_EQ(Json("info " + name)[0]["present"], 20000);
    }
    for (const size_t size : {36u, 44u}) {
        WriteBytes("none.wav", Bytes("whole.wav").replace(40, 4, 4, '\0').substr(0, size));
        ExpectEnd(Vlwav("convert none.wav -o out"), 1, "no audio");
        ExpectEnd(Vlwav("decode none.wav --partial"), 1, "no audio");
    }
    EXPECT_NE(Run("ls out/none.wav").exitCode, 0);
}

}  // namespace
