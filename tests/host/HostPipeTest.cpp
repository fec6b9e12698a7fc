// Conversions that read and write what has no places: standard input and output, pipes and FIFOs.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "riff/ByteOrder.h"
#include "tests/host/VlwavTest.h"

namespace {

constexpr uint32_t kNotKnown = 0xFFFFFFFF;
constexpr size_t kHead = 44;

uint32_t WordAt(const std::string& bytes, size_t place) {
    return bytes.size() < place + 4 ? 0 : LoadLE32(reinterpret_cast<const uint8_t*>(&bytes[place]));
}

class HostPipe : public VlwavTest {
protected:
    // A file with tags and a chunk of another program's after its audio.
    void WriteRich(const std::string& name, uint16_t channels, uint32_t rate, uint32_t frames) const {
        WriteImage(name, WavImage()
                             .Fmt(1, channels, rate, 16)
                             .Data(Noise(size_t{frames} * channels))
                             .Info(None().Chunk("INAM", "Nordwind"))
                             .Chunk("note", "odd")
                             .Sized());
    }
    // A line in which VLWAV stands for the program.
    RunResult Line(std::string line) const {
        for (size_t at; (at = line.find("VLWAV")) != line.npos;) line.replace(at, 5, "'" VLWAV_PATH "'");
        WriteBytes("line", line);
        return Run("bash -o pipefail line");  // of a pipe each part counts
    }
};

// The file at a path, made by the module's writer, is the measure of what goes out past it.
TEST_F(HostPipe, APipeGetsTheFileByteForByte) {
    WriteRich("stereo.wav", 2, 44100, 30011);
    WriteRich("six.wav", 6, 48000, 4001);
    WriteRich("fast.wav", 1, 192000, 9001);
    WriteRich("few.wav", 2, 44100, 30);
    WriteWav("bytes.wav", 1, 8000, 8, 4001);
    const std::pair<const char*, const char*> rows[] = {{"stereo", ""},
                                                        {"stereo", "--rate 8000"},
                                                        {"six", "--rate 44100 --channels 2 --jobs 1"},
                                                        {"six", "--channels 1 --bits 8"},
                                                        {"fast", "--rate 22050 --bits 8 --dither --seed 7"},
                                                        {"few", "--rate 32000"},
                                                        {"bytes", "--rate 48000 --bits 8"}};
    for (const auto& [name, options] : rows) {
        SCOPED_TRACE(std::string(name) + " " + options);
        const std::string source = std::string(name) + ".wav";
        const RunResult run =
            Line("VLWAV convert " + source + " -o file.wav --overwrite " + options + " && VLWAV convert " +
                 source + " -o - " + options + " | cat >pipe.wav && VLWAV convert - -o - " + options + " <" +
                 source + " >plain.wav && cat " + source + " | VLWAV convert - -o - " + options +
                 " | cat >order.wav");
        ASSERT_EQ(run.exitCode, 0) << run.err;
        const std::string file = Bytes("file.wav");
        ASSERT_TRUE(Bytes("pipe.wav") == file);
        ASSERT_TRUE(Bytes("plain.wav") == file);
        // In order: the tags after the audio aren't seen, and the length in the head is.
        const std::string order = Bytes("order.wav");
        const uint32_t audio = WordAt(order, 40);
        ASSERT_EQ(order.size(), kHead + audio + (audio & 1));
        ASSERT_EQ(WordAt(order, 4), order.size() - 8);
        ASSERT_TRUE(order.substr(kHead) == file.substr(kHead, order.size() - kHead));
    }
    // Nothing but the file, under whatever name it goes there.
    EXPECT_EQ(
        Line("VLWAV convert bytes.wav -o by.wav && VLWAV convert bytes.wav -o /dev/stdout | cmp - by.wav")
            .exitCode,
        0);
    EXPECT_EQ(
        Line("cat pipe.wav | sox -t wav - -n stat && ffmpeg -v error -xerror -i pipe.wav -f null -").exitCode,
        0);
}

// A recording that goes on: no length is told, and what is known of it stands before the audio.
TEST_F(HostPipe, WithoutALengthTagsComeFirstAndBothSizesSaySo) {
    const std::string audio(40000, '\x21');
    WriteImage("live.wav", WavImage()
                               .Info(None().Chunk("INAM", "Nordwind"))
                               .Fmt(1, 1, 16000, 16)
                               .Header("data", kNotKnown)
                               .Bytes(audio));
    ASSERT_EQ(
        Line("cat live.wav | VLWAV convert - -o - >/dev/null && mkfifo out && { cat out >got.wav & } && "
             "cat live.wav | VLWAV convert - -o out; wait")
            .exitCode,
        0);
    const std::string got = Bytes("got.wav");
    ASSERT_GT(got.size(), audio.size() + kHead);
    EXPECT_EQ(WordAt(got, 4), kNotKnown);
    EXPECT_EQ(got.substr(36, 4), "LIST");
    EXPECT_NE(got.find("Nordwind"), got.npos);
    EXPECT_EQ(got.substr(got.size() - audio.size() - 8, 8), "data\xFF\xFF\xFF\xFF");
    EXPECT_TRUE(got.substr(got.size() - audio.size()) == audio);
    EXPECT_EQ(Json("info got.wav")[0]["frames"], 20000);
    EXPECT_TRUE(Line("cat got.wav | ffmpeg -v error -i - -f s16le -").out == audio);
    EXPECT_TRUE(Line("cat got.wav | sox -t wav - -t raw -").out == audio);
}

TEST_F(HostPipe, AFrameThatCameInGoesOutBeforeTheNextComes) {
    ASSERT_EQ(mkfifo((m_folder / "in").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((m_folder / "out").c_str(), 0600), 0);
    for (const std::string work :
         {"convert in -o out", "convert --rate 8000 - -o out <in", "decode - -o out <in"}) {
        SCOPED_TRACE(work);
        const std::string line =
            "cd '" + m_folder.string() + "' && '" VLWAV_PATH "' " + work + " >log 2>&1 &";
        ASSERT_EQ(std::system(line.c_str()), 0);  // NOLINT(bugprone-command-processor)
        const int in = open((m_folder / "in").c_str(), O_RDWR);
        const int out = open((m_folder / "out").c_str(), O_RDWR);
        const std::string begin =
            WavImage().Fmt(1, 1, 16000, 16).Header("data", kNotKnown).Bytes(std::string(16000, '\1')).Text();
        ASSERT_EQ(write(in, begin.data(), begin.size()), static_cast<ssize_t>(begin.size()));
        // Of half a second more than three quarters, while no more comes.
        const size_t wanted = work.find("8000") == work.npos ? 12000 : 6000;
        size_t got = 0;
        for (pollfd ready{out, POLLIN, 0}; got < wanted && poll(&ready, 1, 5000) == 1;) {
            char block[4096];
            got += static_cast<size_t>(read(out, block, sizeof block));
        }
        EXPECT_GE(got, wanted) << Bytes("log");
        close(in);
        close(out);
    }
}

TEST_F(HostPipe, EachCommandReadsStandardInputAndAFifoLikeTheFile) {
    WriteRich("a.wav", 2, 44100, 3000);
    WriteWav("b.wav", 1, 8000, 8, 10);
    ASSERT_EQ(mkfifo((m_folder / "fifo").c_str(), 0600), 0);
    for (const std::string work :
         {"info --peak --json", "tag", "compare --json a.wav", "compare --align --json a.wav"}) {
        SCOPED_TRACE(work);
        const std::string unnamed = " | grep -v -e '\"file\"' -e '^[a-z.-]*$'";
        const RunResult file = Line("VLWAV " + work + " a.wav" + unnamed);
        EXPECT_EQ(file.exitCode, 0) << file.err;
        EXPECT_EQ(Line("cat a.wav | VLWAV " + work + " -" + unnamed).out, file.out);
        EXPECT_EQ(Line("cat a.wav >fifo & VLWAV " + work + " fifo" + unnamed).out, file.out);
    }
    EXPECT_EQ(Line("cat a.wav | VLWAV plot - -o a.png && head -c 4 a.png").out, "\x89PNG");
    EXPECT_EQ(Line("cat a.wav >fifo & VLWAV tag b.wav --from fifo").out, "b.wav\n  title      Nordwind\n");
    ExpectEnd(Line("VLWAV tag - --set title=x <a.wav"), 1, "vlwav: standard input: It can't be changed");
    ExpectEnd(Line("cat a.wav | TMPDIR=no VLWAV tag -"), 1,
              "in a temporary file failed: No such file or directory");
    ExpectEnd(Line("VLWAV compare - - <a.wav"), 2, "one of both");
    ExpectEnd(Line("VLWAV info - </dev/zero"), 1, "vlwav: standard input: It is no WAV or AIFF file.");
}

TEST_F(HostPipe, WhatCannotBeWholeFailsWithAReason) {
    WriteRich("a.wav", 2, 44100, 100000);
    std::filesystem::copy(m_folder / "a.wav", m_folder / "cut.wav");
    std::filesystem::resize_file(m_folder / "cut.wav", kHead + 200000);
    const std::string before = Bytes("a.wav");
    // The output is gone, or the source ends early after bytes went out.
    ExpectEnd(Line("{ VLWAV convert a.wav -o -; echo $? >code; } | head -c 1 >/dev/null"), 0,
              "vlwav: a.wav: Writing to standard output failed: Broken pipe");
    EXPECT_EQ(Bytes("code"), "1\n");
    ExpectEnd(Line("cat cut.wav | VLWAV convert - -o - >/dev/null"), 1, "50000 of 100000 promised frames");
    ExpectEnd(Line("VLWAV convert cut.wav -o - | cat >none"), 1, "50000 of 100000 promised frames");
    EXPECT_EQ(Bytes("none"), "");
    // With --partial no head promises what may not come.
    EXPECT_EQ(Line("cat cut.wav | VLWAV convert --partial - -o - | cat >part.wav").exitCode, 0);
    EXPECT_EQ(WordAt(Bytes("part.wav"), 40), kNotKnown);
    EXPECT_EQ(Bytes("part.wav").size(), kHead + 200000);
    ExpectEnd(Line("VLWAV convert a.wav -o - >>a.wav"), 1, "the input itself");
    ExpectEnd(Line("VLWAV convert - -o - <a.wav >>a.wav"), 1, "the input itself");
    ExpectEnd(Line("VLWAV decode - -o - <a.wav >>a.wav"), 1, "the input itself");
    EXPECT_TRUE(Bytes("a.wav") == before);
    ExpectEnd(Line("cat a.wav | VLWAV convert - -o b.wav --set title="), 1, "read but once");
    for (const auto& [line, reason] : {std::pair("a.wav a.wav -o - | cat", "takes one file"),
                                       {"a.wav -o - --json | cat", "--json"},
                                       {"- -o . <a.wav", "Standard input has no name"}})
        ExpectEnd(Line("VLWAV convert " + std::string(line)), 2, reason);
}

}  // namespace
