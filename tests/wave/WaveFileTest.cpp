#include <gtest/gtest.h>

#include "AudioCodec/wave/CWaveFile.h"
#include "AudioCodec/wave/WaveTypes.h"
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

Result OpenImage(const WavImage& image) {
    CWaveFile wave;
    return OpenImage(image, wave);
}

WavImage Sound() { return WavImage().Fmt(1, 2, 44100, 16).Data({1, 2, 3, 4}); }

// One "INFO" list around sub-chunks that are given as bytes.
std::string Info(const WavImage& entries) {
    return "INFO"s + std::string(entries.Image().begin(), entries.Image().end());
}
WavImage Entries() { return WavImage(WavImage::Empty{}); }

TEST(WaveFileWalk, TakesChunksInAnyOrderAndTheLastOfEachKind) {
    CWaveFile wave;
    ASSERT_EQ(OpenImage(WavImage()
                            .Chunk("junk", "odd")
                            .Data({9, 9})
                            .Fmt(1, 1, 8000, 8)
                            .Chunk("LIST", "adtl____")
                            .Chunk("fact", "\1\2\3\4\5\6"s)
                            .Chunk("fact", "\1")
                            .Fmt(1, 2, 48000, 16)
                            .Data({1, 2, 3, 4}),
                        wave),
              RESULT_OK);
    EXPECT_EQ(wave.Format().samplesPerSec, 48000u);
    EXPECT_EQ(wave.Format().blockAlign, 4);
    EXPECT_EQ(wave.DataSize(), 8u);
    int16_t samples[8] = {};
    uint32_t done = 0;
    EXPECT_EQ(wave.ReadData(sizeof samples, samples, &done), RESULT_OK);
    EXPECT_EQ(done, 8u);
    EXPECT_EQ(samples[3], 4);
}

TEST(WaveFileWalk, RefusesWhatIsNoWave) {
    EXPECT_EQ(OpenImage(WavImage(WavImage::Empty{})), RESULT_NOT_WAVE);
    EXPECT_EQ(OpenImage(WavImage()), RESULT_NOT_WAVE);
    EXPECT_EQ(OpenImage(WavImage().Data({1})), RESULT_NOT_WAVE);
    EXPECT_EQ(OpenImage(WavImage(WavImage::Empty{}).Bytes("RIFX").Word32(0).Bytes("WAVE").Fmt(1, 1, 8000, 8)),
              RESULT_NOT_WAVE);
    EXPECT_EQ(OpenImage(WavImage(WavImage::Empty{}).Bytes("RIFF").Word32(0).Bytes("wave").Fmt(1, 1, 8000, 8)),
              RESULT_NOT_WAVE);
    CWaveFile wave;
    EXPECT_EQ(wave.OpenForReading(nullptr, true), RESULT_CANNOT_OPEN);
    EXPECT_EQ(wave.OpenForReading(u"/", true), RESULT_CANNOT_OPEN);
    EXPECT_EQ(wave.OpenForReading(u"/nowhere/at all.wav", true), RESULT_CANNOT_OPEN);
}

TEST(WaveFileWalk, FormatRecordsOfEveryLength) {
    const auto record = [](uint32_t size, uint16_t extraSize, size_t extra) {
        WavImage image;
        image.Header("fmt ", size).FormatRecord(0xFFFE, 1, 8000, 16);
        if (size > 16) image.Word16(extraSize);
        return image.Bytes(std::string(extra, 'x')).Bytes(std::string(size & 1, '\0')).Data({1});
    };
    struct Case {
        uint32_t size;
        uint16_t claimed;
        size_t extra, kept;
    };
    for (const Case& c :
         {Case{16, 0, 0, 0}, {18, 500, 0, 0}, {40, 22, 22, 22}, {40, 0xFFFF, 22, 22}, {21, 3, 3, 3}}) {
        CWaveFile wave;
        ASSERT_EQ(OpenImage(record(c.size, c.claimed, c.extra), wave), RESULT_OK) << c.size;
        EXPECT_EQ(wave.Format().extra.size(), c.kept) << c.size;
        EXPECT_EQ(wave.DataSize(), 2u) << c.size;
    }
}

TEST(WaveFileWalk, ListsKeepTheFirstOfAnIdAndTheLastListWins) {
    CWaveFile wave;
    WavImage image = Sound();
    image.Chunk("LIST", Info(Entries().Chunk("ISFT", "gone")));
    image.Chunk("LIST",
                Info(Entries().Chunk("INAM", "One\0"s).Chunk("INAM", "Two\0"s).Chunk("IART", "a\0b"s)));
    ASSERT_EQ(OpenImage(image, wave), RESULT_OK);
    const CWaveFile::ChunkMap expected{{FourCC("INAM"), "One\0"s}, {FourCC("IART"), "a\0b"s}};
    EXPECT_EQ(wave.Chunks(), expected);
}

TEST(WaveFileWalk, ListsThatLieAreCutOrRefused) {
    // The entry claims more than its list has: the list's end is its end, and the audio behind it is found.
    CWaveFile wave;
    ASSERT_EQ(OpenImage(WavImage()
                            .Fmt(1, 1, 8000, 8)
                            .Header("LIST", 16)
                            .Bytes("INFO")
                            .Header("INAM", 40)
                            .Bytes("abcd")
                            .Chunk("data", std::string(64, 'x')),
                        wave),
              RESULT_OK);
    EXPECT_EQ(wave.DataSize(), 64u);
    EXPECT_EQ(wave.Chunks().at(FourCC("INAM")), "abcd");

    // A last odd entry whose pad byte the list doesn't count.
    ASSERT_EQ(OpenImage(Sound().Header("LIST", 15).Bytes("INFO").Header("INAM", 3).Bytes("abc\0"s), wave),
              RESULT_OK);
    EXPECT_EQ(wave.Chunks().at(FourCC("INAM")), "abc");

    EXPECT_EQ(OpenImage(Sound().Header("LIST", 0xFFFFFFFF).Bytes("INFO")), RESULT_NOT_WAVE);
    EXPECT_EQ(OpenImage(Sound().Header("LIST", 20).Bytes("INFO").Header("INAM", 0xFFFFFFFF).Bytes("abcd")),
              RESULT_NOT_WAVE);
    EXPECT_EQ(OpenImage(Sound().Header("LIST", 20).Bytes("INFO").Header("INAM", 0xFFFFFFFE).Bytes("abcd")),
              RESULT_NOT_WAVE);
    EXPECT_EQ(OpenImage(Sound().Header("LIST", 3).Bytes("INF\0"s)), RESULT_OK);
    EXPECT_EQ(OpenImage(Sound().Header("LIST", 12).Bytes("INFO").Header("INAM", 0)), RESULT_OK);
}

TEST(WaveFileWalk, DataThatClaimsMoreThanThereIsKeepsItsClaim) {
    CWaveFile wave;
    ASSERT_EQ(OpenImage(WavImage().Fmt(1, 1, 8000, 16).Header("data", 0xFFFFFFFF).Bytes("abcdef"), wave),
              RESULT_OK);
    EXPECT_EQ(wave.DataSize(), 0xFFFFFFFFu);
    char bytes[64];
    uint32_t done = 0;
    EXPECT_EQ(wave.ReadData(sizeof bytes, bytes, &done), RESULT_OK);
    EXPECT_EQ(done, 6u);
}

TEST(WaveFileWalk, SizesThatLieTakeNoMemory) {
    constexpr size_t kSmall = 200000;
    for (const uint32_t claimed : {0x10000000u, 0xFFFFFFF0u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        for (const WavImage& image :
             {WavImage().Header("fmt ", claimed).FormatRecord(1, 1, 8000, 8).Bytes(std::string(100, 'x')),
              Sound().Header("LIST", claimed).Bytes("INFO").Header("INAM", claimed - 30).Bytes("abc"),
              Sound().Header("LIST", 100).Bytes("INFO").Header("INAM", claimed).Bytes(std::string(200, 'x')),
              Sound().Header("fact", claimed).Bytes("abcd"),
              WavImage().Fmt(1, 1, 8000, 8).Header("data", claimed)}) {
            const ScopedFile file(image.Image());
            ByteStream stream(image.Image());
            const std::u16string path = file.Wide();
            CWaveFile wave;
            const size_t before = AllocatedSoFar().bytes;
            wave.OpenForReading(path.c_str(), true);
            wave.AttachStream(&stream);
            wave.ParseChunks();
            EXPECT_LT(AllocatedSoFar().bytes - before, kSmall) << claimed;
        }
    }
}

WavImage Everything() {
    return WavImage()
        .Header("fmt ", 20)
        .FormatRecord(1, 1, 8000, 8)
        .Word16(2)
        .Word16(0)
        .Chunk("LIST", Info(Entries().Chunk("INAM", "Song\0"s).Chunk("IART", "xy")))
        .Chunk("fact", "\1\0\0\0"s)
        .Chunk("data", "0123456")
        .Chunk("bext", "abc");
}

TEST(WaveFileWalk, TruncationAtEveryByteGivesACode) {
    const std::vector<uint8_t> whole = Everything().Image();
    for (size_t length = 0; length <= whole.size(); ++length) {
        const ScopedFile file(
            std::vector<uint8_t>(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        CWaveFile wave;
        const Result result = wave.OpenForReading(file.Wide().c_str(), true);
        EXPECT_TRUE(result == RESULT_OK || result == RESULT_NOT_WAVE) << length;
        if (length < 40) {
            EXPECT_EQ(result, RESULT_NOT_WAVE) << length;
        }
    }
    EXPECT_EQ(OpenImage(Everything()), RESULT_OK);
}

TEST(WaveFileStream, FailureAtAnyCallGivesACodeAndNothingStale) {
    ByteStream sound(Everything().Image());
    CWaveFile wave;
    wave.AttachStream(&sound);
    ASSERT_TRUE(wave.ParseChunks());
    const uint64_t calls = sound.calls;
    for (uint64_t call = 0; call < calls; ++call) {
        ByteStream failing(Everything().Image());
        failing.failFromCall = call;
        CWaveFile broken;
        broken.AttachStream(&failing);
        // A failure at a chunk's header ends the walk like the end of the file: what is not reached is not
        // there.
        EXPECT_TRUE(!broken.ParseChunks() || broken.DataSize() == 0) << call;

        ByteStream shortened(Everything().Image());
        shortened.shortCall = call;
        CWaveFile cut;
        cut.AttachStream(&shortened);
        cut.ParseChunks();
        char bytes[100];
        uint32_t done = 0;
        cut.ReadData(sizeof bytes, bytes, &done);
        EXPECT_LE(done, sizeof bytes);
    }
}

TEST(WaveFileStream, AnImageMayBeginAnywhereAndSizesAreProvedFirst) {
    std::vector<uint8_t> bytes(1000, 'z');
    const std::vector<uint8_t> image = Everything().Image();
    bytes.insert(bytes.end(), image.begin(), image.end());
    ByteStream stream(bytes);
    stream.position = 1000;
    CWaveFile wave;
    wave.AttachStream(&stream);
    ASSERT_TRUE(wave.ParseChunks());
    char audio[7];
    uint32_t done = 0;
    ASSERT_EQ(wave.ReadData(sizeof audio, audio, &done), RESULT_OK);
    EXPECT_EQ(std::string(audio, done), "0123456");

    for (const char* id : {"fmt ", "LIST"}) {
        ByteStream lying(WavImage().Header(id, 0xFFFFFFF0).Bytes("INFO").Header("INAM", 0xFFFFFF00).Image());
        wave.AttachStream(&lying);
        EXPECT_FALSE(wave.ParseChunks());
    }
}

TEST(WaveFileSeek, StaysOnFramesAndWithinTheAudio) {
    CWaveFile wave;
    ASSERT_EQ(OpenImage(Sound(), wave), RESULT_OK);
    struct Case {
        int64_t offset;
        uint32_t origin;
        int64_t lands;
    };
    for (const Case& c : {Case{5, 0, 4},
                          {0, 2, 8},
                          {100, 2, 8},
                          {-3, 2, 4},
                          {INT64_MIN, 2, 0},
                          {-9, 1, 0},
                          {6, 1, 4},
                          {INT64_MAX, 1, 8},
                          {int64_t{1} << 32, 0, 8},
                          {4, 7, 4},
                          {-1, 0, 0}}) {
        EXPECT_EQ(wave.SeekData(c.offset, c.origin), RESULT_OK);
        EXPECT_EQ(wave.TellData(), c.lands) << c.offset << " from " << c.origin;
    }
}

std::vector<uint8_t> WriteFile(const ScopedFile& file, const std::string& audio,
                               const CWaveFile::ChunkMap& chunks) {
    WaveFormat format;
    format.formatTag = kFormatTagPcm;
    format.channels = 1;
    format.samplesPerSec = format.avgBytesPerSec = 8000;
    format.bitsPerSample = 8;
    CWaveFile wave;
    EXPECT_EQ(wave.OpenForWriting(file.Wide().c_str(), true), RESULT_OK);
    EXPECT_EQ(wave.WriteData("x", 1), RESULT_FAILED);
    wave.BeginAudio(format);
    EXPECT_EQ(wave.WriteData(audio.data(), static_cast<uint32_t>(audio.size())), RESULT_OK);
    wave.Chunks() = chunks;
    wave.CloseFile();
    return file.Bytes();
}

TEST(WaveFileWrite, LayoutIsHeaderAudioPadAndList) {
    const ScopedFile file;
    const auto expected = [](uint32_t riffSize) {
        return WavImage(WavImage::Empty{}).Bytes("RIFF").Word32(riffSize).Bytes("WAVE").Fmt(1, 1, 8000, 8);
    };
    EXPECT_EQ(WriteFile(file, "abc", {}), expected(40).Chunk("data", "abc").Image());
    EXPECT_EQ(WriteFile(file, "ab", {}), expected(38).Chunk("data", "ab").Image());
    EXPECT_EQ(WriteFile(file, "abc", {{FourCC("INAM"), "x\0z"s}, {FourCC("ICRD"), "2004"}}),
              expected(76)
                  .Chunk("data", "abc")
                  .Chunk("LIST", Info(Entries().Chunk("ICRD", "2004").Chunk("INAM", "x\0z"s)))
                  .Image());
}

TEST(WaveFileWrite, ResultsTellWhyAFileCannotBeHad) {
    const ScopedFile file(Sound().Image());
    CWaveFile reader;
    ASSERT_EQ(reader.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    CWaveFile writer;
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
