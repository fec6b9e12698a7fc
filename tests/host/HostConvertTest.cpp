#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "platform/base/LittleEndian.h"
#include "tests/host/VlwavTest.h"

namespace {

class HostConvert : public VlwavTest {
protected:
    nlohmann::json Info(const std::string& file) const {
        return nlohmann::json::parse(Vlwav("info --json " + file).out)[0];
    }
};

class HostConvertThreads : public HostConvert {};

TEST_F(HostConvert, OtherProgramsReadEveryStockFormatAsItWasMeant) {
    WriteWav("in.wav", 2, 44100, 16, 44100);
    const auto formats = nlohmann::json::parse(Vlwav("formats --json").out);
    for (const auto& row : formats) {
        const std::string index = row["index"].dump();
        const RunResult run =
            Vlwav("convert in.wav -o out.wav --overwrite --set title=Lied --format " + index);
        ASSERT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out, "in.wav -> out.wav: " + row["text"].get<std::string>() + ", " +
                               run.out.substr(run.out.find_last_of(' ') + 1));
        const std::string wanted =
            row["channels"].dump() + " " + row["rate"].dump() + " " + row["bits"].dump() + "\n";
        EXPECT_EQ(Run("echo $(soxi -c out.wav) $(soxi -r out.wav) $(soxi -b out.wav)").out, wanted);
        EXPECT_NEAR(std::stod(Run("soxi -s out.wav").out), row["rate"].get<double>(), 2) << index;
        const RunResult sndfile = Run("sndfile-info out.wav");
        EXPECT_EQ(sndfile.exitCode, 0);
        for (const std::string& line :
             {"Channels    : " + row["channels"].dump(), "Sample Rate : " + row["rate"].dump(),
              std::string("INAM : Lied"), "Bit Width     : " + row["bits"].dump()})
            EXPECT_NE(sndfile.out.find(line), std::string::npos) << index << line << sndfile.out;
    }
}

TEST_F(HostConvert, WithoutConversionEveryAudioByteStays) {
    for (const uint16_t bits : {uint16_t{8}, uint16_t{16}}) {
        const std::string audio = WriteWav("in.wav", 1, 22050, bits, 40001);
        ASSERT_EQ(Vlwav("convert in.wav -o out.wav --overwrite").exitCode, 0);
        EXPECT_TRUE(Bytes("out.wav").substr(44, audio.size()) == audio) << bits;
        EXPECT_EQ(Info("out.wav")["bits"], bits);
    }
}

struct Choice {
    uint16_t channels;
    uint32_t rate;
    uint16_t bits;
    const char* options;
    const char* text;
};

TEST_F(HostConvert, WhatIsNotAskedForIsTheNearestToTheSource) {
    for (const Choice& c : {Choice{6, 44100, 16, "", "44.100 kHz, 16 Bits, Mono"},
                            Choice{2, 192000, 16, "", "48.000 kHz, 16 Bits, Stereo"},
                            Choice{2, 70000, 8, "", "48.000 kHz, 8 Bits, Stereo"},
                            Choice{1, 12000, 8, "", "11.025 kHz, 8 Bits, Mono"},
                            Choice{1, 12000, 8, "--bits 16 --channels 2", "11.025 kHz, 16 Bits, Stereo"},
                            Choice{2, 48000, 16, "--rate 32000", "32.000 kHz, 16 Bits, Stereo"},
                            Choice{2, 96000, 8, "--channels 1", "48.000 kHz, 8 Bits, Mono"}}) {
        WriteWav("in.wav", c.channels, c.rate, c.bits, c.rate);
        const RunResult run = Vlwav("convert in.wav -o out.wav --overwrite " + std::string(c.options));
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out.find("in.wav -> out.wav: " + std::string(c.text)), 0u) << run.out;
        EXPECT_NEAR(Info("out.wav")["seconds"].get<double>(), 1, 0.001) << c.text;
    }
}

TEST_F(HostConvert, RefusesWhatIsNoStockFormatOrWouldCollideBeforeAnythingIsWritten) {
    std::filesystem::create_directories(m_folder / "out" / "other");
    WriteWav("a.wav", 2, 44100, 16, 100);
    WriteWav("a.aif", 2, 44100, 16, 100);
    for (const char* arguments :
         {"--rate 44101", "--channels 3", "--bits 24", "--format 28", "--format 1 --bits 8", "--set disc=1",
          "--set nothing", "--jobs 0", "a.aif", "a.wav"}) {
        const RunResult run = Vlwav("convert a.wav -o out " + std::string(arguments));
        EXPECT_EQ(run.exitCode, 2) << arguments;
        EXPECT_NE(run.err, "") << arguments;
    }
    EXPECT_NE(Vlwav("convert a.wav -o out --rate 1").err.find("possible are 8000, 11025"), std::string::npos);
    EXPECT_EQ(Vlwav("convert a.wav a.aif -o file.wav").exitCode, 2);
    EXPECT_EQ(Names(), (std::vector<std::string>{"a.aif", "a.wav", "out"}));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder / "out"), {}), 1);
}

TEST_F(HostConvertThreads, ManyFilesAtOnceAndOneBadAmongThem) {
    std::filesystem::create_directory(m_folder / "out");
    std::string names;
    for (int i = 0; i < 12; ++i) {
        const std::string name = "f" + std::to_string(i) + ".wav";
        WriteWav(name, 2, 44100, 16, 5000 + static_cast<uint32_t>(i));
        names += name + " ";
    }
    WriteBytes("bad.wav", "no wave");
    WriteWav("six.wav", 6, 44100, 16, 10);
    const RunResult run = Vlwav("convert " + names + "bad.wav six.wav --channels 2 -o out --jobs 5");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 12) << run.out;
    EXPECT_NE(run.err.find("vlwav: bad.wav: This is no usable RIFF"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("vlwav: six.wav: 2 channels can't be made of 6"), std::string::npos) << run.err;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder / "out"), {}), 12);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(Info("out/f" + std::to_string(i) + ".wav")["frames"], 5000 + i);
    struct stat status {};  // what the shell would have given a new file
    ASSERT_EQ(stat((m_folder / "out" / "f0.wav").c_str(), &status), 0);
    EXPECT_EQ(Run("umask").out, (status.st_mode & 0777) == 0644 ? "0022\n" : "another");
}

TEST_F(HostConvert, AnExistingOutputAndTheInputItselfStayAsTheyAre) {
    const std::string audio = WriteWav("a.wav", 2, 44100, 16, 100);
    const std::string before = Bytes("a.wav");
    WriteBytes("out.wav", "precious");
    std::filesystem::create_symlink("a.wav", m_folder / "link.wav");
    EXPECT_NE(Vlwav("convert a.wav -o out.wav").err.find("out.wav is there already"), std::string::npos);
    EXPECT_EQ(Bytes("out.wav"), "precious");
    for (const char* arguments : {"a.wav -o a.wav", "a.wav -o link.wav", "a.wav -o .", "link.wav -o a.wav"}) {
        const RunResult run = Vlwav("convert --overwrite " + std::string(arguments));
        EXPECT_EQ(run.exitCode, 1) << arguments;
        EXPECT_NE(run.err.find("the input itself"), std::string::npos) << run.err;
    }
    EXPECT_EQ(Vlwav("convert a.wav -o /dev/null --overwrite").exitCode, 1);
    EXPECT_TRUE(Bytes("a.wav") == before);
    EXPECT_EQ(Names(), (std::vector<std::string>{"a.wav", "link.wav", "out.wav"}));
}

TEST_F(HostConvert, ADiskThatFillsUpAnywhereLeavesNothingBehind) {
    // 1024 bytes (two blocks of the shell) fill up in the audio, with the tags that Close writes, or behind
    // all (which is enough).
    WriteWav("audio.wav", 2, 44100, 16, 1000);
    WriteWav("tags.wav", 2, 44100, 16, 240);
    WriteWav("odd.wav", 1, 44100, 8, 979);
    const auto before = Names();
    for (const char* input : {"audio.wav", "tags.wav --set comment=01234567890123456789"}) {
        const RunResult run = Run("ulimit -f 2; '" VLWAV_PATH "' convert -o out.wav " + std::string(input));
        EXPECT_EQ(run.exitCode, 1) << input;
        EXPECT_NE(run.err.find("room on the disk"), std::string::npos) << run.err;
        EXPECT_EQ(Names(), before) << input;
    }
    EXPECT_EQ(Run("ulimit -f 2; '" VLWAV_PATH "' convert -o out.wav odd.wav").exitCode, 0);
}

TEST_F(HostConvert, WhatTheOutputLacksIsNamed) {
    WavImage image;
    image.Fmt(1, 1, 8000, 16).Chunk("bext", "x").Chunk("JUNK", "x").Data({1, 2, 3}).Chunk("cue ", "abcd");
    image.Chunk("LIST", "adtlxxxx");
    const std::string entries =
        TagEntry("composer", "A") + TagEntry("Mood", "B") + TagEntry("disc", "1") + '\0';
    WavImage list(WavImage::Empty{});
    list.Bytes("INFO").Chunk("ISFT", "tool").Chunk("INAM", "Name").Chunk("ICRD", "2001-05-06");
    list.Chunk("IARL", std::string("12\0", 3)).Chunk("vltg", entries);
    const auto& bytes = list.Image();
    image.Chunk("LIST", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    WriteImage("in.wav", image);
    const RunResult run = Vlwav("convert in.wav -o out.wav");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(
        run.err,
        "vlwav: in.wav: Note: the output doesn't have \"bext\", \"cue \", list \"adtl\", \"-05-06\" of the "
        "date, text \"ISFT\", tag disc, tag mood.\n");
    const auto tags = nlohmann::json::parse(Vlwav("tag --json out.wav").out)[0]["tags"];
    EXPECT_EQ(tags, (nlohmann::json{{"title", "Name"}, {"composer", "A"}, {"track", 12}, {"year", 2001}}));
}

}  // namespace
