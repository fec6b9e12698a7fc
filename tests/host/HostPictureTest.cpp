#include "tests/host/VlwavTest.h"

namespace {

class HostPicture : public VlwavTest {
protected:
    void SetUp() override {
        VlwavTest::SetUp();
        // Two pixels, red and blue, as plain text that is easy to check: a bitmap of 24 bits.
        m_bitmap = std::string("BM\x3E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\2\0\0\0\1\0\0\0\1\0\x18\0", 30);
        m_bitmap.append(24, '\0').append("\0\0\xFF\xFF\0\0\0\0", 8);
        WriteBytes("in.bmp", m_bitmap);
        WriteWav("a.wav", 2, 44100, 16, 10);
    }

    std::string m_bitmap;
};

TEST_F(HostPicture, WritesWhatAHostGets) {
    EXPECT_EQ(Vlwav("picture in.bmp -o same").exitCode, 0);
    EXPECT_EQ(Bytes("same"), m_bitmap);
    EXPECT_EQ(Vlwav("picture in.bmp --to jpg -o - >out.jpg").exitCode, 0);
    EXPECT_EQ(Bytes("out.jpg").substr(0, 3), "\xFF\xD8\xFF");
    EXPECT_EQ(Vlwav("picture in.bmp --to bmp -o out.bmp").exitCode, 0);
    EXPECT_EQ(Bytes("out.bmp").substr(54), m_bitmap.substr(54));
}

TEST_F(HostPicture, SaysWhyThereIsNoPicture) {
    WriteBytes("broken.jpg", "\xFF\xD8\xFF");
    const auto before = Names();
    for (const char* line : {"missing.jpg -o out", "broken.jpg --to jpg -o out", "in.bmp -o in.bmp",
                             "in.bmp --to jpg -o no/folder"}) {
        SCOPED_TRACE(line);
        ExpectEnd(Vlwav(std::string("picture ") + line), 1, "vlwav: ");
    }
    EXPECT_EQ(Run("TMPDIR=no '" VLWAV_PATH "' picture in.bmp --to jpg -o out").exitCode, 1);
    EXPECT_EQ(Vlwav("picture in.bmp --to png -o out").exitCode, 2);
    EXPECT_EQ(Names(), before);
}

TEST_F(HostPicture, WithoutTheLibrariesOnDemandAllElseWorks) {
    const auto folder = std::filesystem::path(VLWAV_PATH).parent_path().parent_path();
    for (const char* file : {"bin/vlwav", "lib/VlACWav3.so", "lib/libvlplatform.so.3", "lib/libvlwav.so.1"})
        std::filesystem::copy_file(folder / file, m_folder / std::filesystem::path(file).filename());
    EXPECT_EQ(Run("./vlwav picture in.bmp -o out").exitCode, 0);  // as it is
    WriteWav("wide.wav", 1, 8000, 24, 10);
    const RunResult info = Run("./vlwav info a.wav wide.wav");
    EXPECT_NE(info.out.find("10 frames"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("wide.wav\n  codec      PCM in WAV, 24"), std::string::npos)
        << info.out;  // its head tells it
    WriteImage("id3.wav",
               WavImage().Fmt(1, 1, 8000, 16).Chunk("data", "12345678").Chunk("id3 ", "ID3\x03..."));
    ExpectEnd(Run("./vlwav decode wide.wav -o wide.raw"), 1, "the package libavformat59");
    ExpectEnd(Run("./vlwav convert id3.wav -o out.wav"), 1, "the package libtag1v5");  // and loses none
    EXPECT_EQ(Run("./vlwav decode id3.wav -o id3.raw").exitCode, 0);
    ExpectEnd(Run("./vlwav picture in.bmp --to jpg -o out.jpg"), 1, "libvlimage.so");
    ExpectEnd(Run("./vlwav plot a.wav -o out.png"), 1, "libvlplot.so");
    ExpectEnd(Run("./vlwav compare a.wav a.wav --align"), 1, "install what is missing");
    EXPECT_EQ(Run("./vlwav compare a.wav a.wav").exitCode, 0);
    std::filesystem::copy_file(folder / "lib/libvlimage.so", m_folder / "libvlimage.so");
    EXPECT_EQ(Run("./vlwav picture in.bmp --to jpg -o out.jpg").exitCode, 0);
}

}  // namespace
