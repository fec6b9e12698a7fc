#include <gtest/gtest.h>

#include "AudioCodec/wave/riff/CWaveFile.h"
#include "AudioCodec/wave/riff/StreamSource.h"
#include "riff/ChunkWalk.h"
#include "riff/WaveTypes.h"
#include "tests/support/ByteStream.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

using namespace std::string_literals;

Result OpenImage(const WavImage& image, CWaveFile& wave) {
    const ScopedFile file(image.Image());
    return wave.OpenForReading(file.Wide().c_str(), true);
}

WavImage Sound() { return WavImage().Fmt(1, 2, 44100, 16).Data({1, 2, 3, 4}); }

TEST(WaveFileWalk, TakesChunksInAnyOrderAndTheLastOfEachKind) {
    WavImage image = WavImage().Chunk("junk", "odd").Data({9, 9}).Fmt(1, 1, 8000, 8);
    image.Chunk("LIST", "adtl____").Chunk("fact", "\1\2\3\4\5\6"s).Chunk("fact", "\1");
    image.Fmt(1, 2, 48000, 16).Data({1, 2, 3, 4}).Chunk("tail", "no audio");
    CWaveFile wave;
    ASSERT_EQ(OpenImage(image, wave), RESULT_OK);
    EXPECT_EQ(wave.Format().samplesPerSec, 48000u);
    EXPECT_EQ(wave.Format().blockAlign, 4);
    EXPECT_EQ(wave.DataSize(), 8u);
    int16_t samples[8] = {};
    uint32_t done = 0;
    EXPECT_EQ(wave.ReadData(sizeof samples, samples, &done), RESULT_OK);
    EXPECT_EQ(done, 8u);
    EXPECT_EQ(samples[3], 4);
    EXPECT_EQ(wave.SeekData(5, 7), RESULT_OK);  // an unknown origin counts as the start
    EXPECT_EQ(wave.TellData(), 4);              // places are those of whole frames
}

TEST(WaveFileWalk, RefusesWhatIsNoWave) {
    const auto entry = [](uint32_t list, uint32_t size) {
        return Sound().Header("LIST", list).Bytes("INFO").Header("INAM", size).Bytes("abcd");
    };
    CWaveFile wave;
    for (const WavImage& image :
         {None(), WavImage(), WavImage().Data({1}),
          None().Bytes("RIFX").Word32(0).Bytes("WAVE").Fmt(1, 1, 8000, 8),
          None().Bytes("RIFF").Word32(0).Bytes("wave").Fmt(1, 1, 8000, 8),
          Sound().Header("LIST", 0xFFFFFFFF).Bytes("INFO"), entry(20, 0xFFFFFFFF), entry(20, 0xFFFFFFFE)})
        EXPECT_EQ(OpenImage(image, wave), RESULT_NOT_WAVE) << image.Text();
    for (const char16_t* path : {static_cast<const char16_t*>(nullptr), u"/", u"/nowhere/at all.wav"})
        EXPECT_EQ(wave.OpenForReading(path, true), RESULT_CANNOT_OPEN);
}

TEST(WaveFileWalk, FormatRecordsOfEveryLength) {
    struct Case {
        uint32_t size;
        uint16_t claimed;
        size_t kept;
    };
    for (const Case& c : {Case{16, 0, 0}, {18, 500, 0}, {40, 22, 22}, {40, 0xFFFF, 22}, {21, 3, 3}}) {
        WavImage image = WavImage().Header("fmt ", c.size).FormatRecord(0xFFFE, 1, 8000, 16);
        if (c.size > 16) image.Word16(c.claimed).Bytes(std::string(c.size - 18 + (c.size & 1), 'x'));
        CWaveFile wave;
        ASSERT_EQ(OpenImage(image.Data({1}), wave), RESULT_OK) << c.size;
        EXPECT_EQ(wave.Format().extra.size(), c.kept) << c.size;
        EXPECT_EQ(wave.DataSize(), 2u) << c.size;
    }
}

TEST(WaveFileWalk, ListsKeepTheFirstOfAnIdAndTheLastListWins) {
    WavImage image = Sound().Info(None().Chunk("ISFT", "gone"));
    image.Info(
        None().Chunk("IKEY", "").Chunk("INAM", "One\0"s).Chunk("INAM", "Two\0"s).Chunk("IART", "a\0b"s));
    CWaveFile wave;
    ASSERT_EQ(OpenImage(image, wave), RESULT_OK);
    const InfoChunks expected{{FourCC("INAM"), "One\0"s}, {FourCC("IART"), "a\0b"s}, {FourCC("IKEY"), ""}};
    EXPECT_EQ(wave.Chunks(), expected);
}

TEST(WaveFileWalk, SizesThatLieAreCutWithinAListAndKeptOfTheAudio) {
    const struct {
        uint32_t list, entry;
        std::string bytes, value;
    } rows[] = {
        {16, 40, "abcd", "abcd"},
        {16, 0xFFFFFFFE, "abcd", "abcd"},
        {15, 3, "abc\0"s, "abc"},  // the list doesn't count the last pad byte
        {20, 5, "abcde\0xx"s, "abcde"},
    };
    for (const auto& [list, entry, bytes, value] : rows) {
        WavImage image =
            WavImage().Fmt(1, 1, 8000, 8).Header("LIST", list).Bytes("INFO").Header("INAM", entry);
        CWaveFile wave;
        ASSERT_EQ(OpenImage(image.Bytes(bytes).Chunk("data", std::string(64, 'x')), wave), RESULT_OK);
        EXPECT_EQ(wave.DataSize(), 64u) << list;  // what stands after the list is found
        EXPECT_EQ(wave.Chunks().Find(FourCC("INAM")), value);
    }
    CWaveFile wave;
    EXPECT_EQ(OpenImage(Sound().Header("LIST", 15).Bytes("INFO").Header("INAM", 3).Bytes("abc"), wave),
              RESULT_OK);
    EXPECT_EQ(OpenImage(Sound().Header("LIST", 3).Bytes("INF\0"s), wave), RESULT_OK);
    EXPECT_EQ(OpenImage(Sound().Header("LIST", 12).Bytes("INFO").Header("INAM", 0), wave), RESULT_OK);
    EXPECT_EQ(OpenImage(WavImage().Fmt(1, 1, 8000, 16).Header("data", 0xFFFFFFFF), wave), RESULT_OK);
    EXPECT_EQ(wave.DataSize(), 0xFFFFFFFFu);
}

TEST(WaveFileWalk, WithoutAudioThereIsNothingToRead) {
    const WavImage image = WavImage().Fmt(1, 1, 8000, 16).Chunk("junk", std::string(20000, 'j'));
    const ScopedFile file(image.Image());
    ByteStream stream(image.Image());
    CWaveFile wave;
    ASSERT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    for (int of = 0; of < 2; ++of) {
        for (int moved = 0; moved < 2; ++moved) {
            char bytes[100];
            uint32_t done = 9;
            EXPECT_EQ(wave.ReadData(sizeof bytes, bytes, &done), RESULT_OK);
            EXPECT_EQ(done, 0u);
            EXPECT_EQ(wave.SeekData(0, 0), RESULT_OK);
        }
        wave.AttachStream(&stream);
        ASSERT_TRUE(wave.ParseChunks());
    }
}

TEST(ChunkWalk, TakesACallersSizeInsteadOfOneThatLies) {
    ByteStream stream(None().Header("data", 0xFFFFFFFF).Bytes("ab").Header("tail", 0).Image());
    StreamSource source(stream);
    ChunkWalk walk(source, ByteOrder::Little, 0);
    ASSERT_TRUE(walk.Next());
    walk.SetSize(2);
    EXPECT_TRUE(walk.Next());
    EXPECT_EQ(walk.Current().id, FourCC("tail"));
}

TEST(WaveFileWalk, SizesThatLieTakeNoMemory) {
    constexpr size_t kSmall = 200000;
    for (const uint32_t claimed : {0x10000000u, 0xFFFFFFF0u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        const std::string some(200, 'x');
        const struct {
            bool opens;
            WavImage image;
        } rows[] = {
            {false, WavImage().Header("fmt ", claimed).FormatRecord(1, 1, 8000, 8).Bytes(some)},
            {false, Sound().Header("LIST", claimed).Bytes("INFO").Header("INAM", claimed - 30).Bytes("abc")},
            {true, Sound().Header("LIST", 100).Bytes("INFO").Header("INAM", claimed).Bytes(some)},
            {true, Sound().Header("fact", claimed).Bytes("abcd")}};
        for (const auto& [opens, image] : rows) {
            const ScopedFile file(image.Image());
            ByteStream stream(image.Image());
            const std::u16string path = file.Wide();
            CWaveFile wave;
            const size_t before = AllocatedSoFar().bytes;
            EXPECT_EQ(wave.OpenForReading(path.c_str(), true) == RESULT_OK, opens);
            wave.AttachStream(&stream);
            EXPECT_EQ(wave.ParseChunks(), opens);
            EXPECT_LT(AllocatedSoFar().bytes - before, kSmall) << claimed;
        }
    }
}

TEST(WaveFileWrite, ResultsTellWhyAFileCannotBeHad) {
    const ScopedFile file(Sound().Image());
    CWaveFile reader;
    ASSERT_EQ(reader.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    CWaveFile writer;
    EXPECT_EQ(writer.WriteData("x", 1), RESULT_FAILED);
    EXPECT_EQ(writer.OpenForWriting(file.Wide().c_str(), true), RESULT_FILE_IN_USE);
    EXPECT_EQ(writer.OpenForWriting(file.Wide().c_str(), false), RESULT_CANNOT_CREATE);
    EXPECT_EQ(writer.OpenForWriting(u"/nowhere/at all.wav", true), RESULT_CANNOT_OPEN);
    EXPECT_EQ(writer.OpenForReading(file.Wide().c_str(), false), RESULT_FILE_IN_USE);
    EXPECT_EQ(file.Bytes(), Sound().Image());
    reader.CloseFile();
    EXPECT_EQ(writer.OpenForReading(file.Wide().c_str(), false), RESULT_OK);
    EXPECT_EQ(writer.OpenForReading(file.Wide().c_str(), false), RESULT_OK);  // its own handle is no obstacle

    WaveFormat format;
    CWaveFile full;
    ASSERT_EQ(full.OpenForWriting(u"/dev/full", true), RESULT_OK);
    full.BeginAudio(format);
    EXPECT_EQ(full.WriteData("abcd", 4), RESULT_WRITE_FAILED);
}

}  // namespace
