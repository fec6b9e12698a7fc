// Decoders against another decoder's pixels, encoders against the decoders, and bytes that are no pictures.
#include "platform/image/Image.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <fstream>
#include <random>
#include <thread>

#include "platform/base/LastError.h"
#include "platform/base/LittleEndian.h"
#include "platform/file/File.h"
#include "platform/file/TempFile.h"
#include "tests/platform/SystemFaults.h"
#include "tests/platform/TempFolder.h"
#include "tests/support/ByteStream.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

HRESULT LoadBytes(CImage& image, const Bytes& bytes) {
    ByteStream stream(bytes);
    return image.Load(&stream);
}

// Whether a library of that name is in the process.
bool IsMapped(const std::string& name) {
    std::ifstream maps("/proc/self/maps");
    return std::string(std::istreambuf_iterator<char>(maps), {}).find(name) != std::string::npos;
}

bool AnyImageLibraryIsMapped() {
    return IsMapped("libvlimage") || IsMapped("libjpeg") || IsMapped("libpng") || IsMapped("libgif");
}

// A picture of soft shapes and some noise in each format that Create knows.
void Paint(CImage& image, int32_t bits, DWORD flags = 0, int32_t width = 61, int32_t height = 43) {
    ASSERT_TRUE(image.Create(width, height, bits, flags));
    std::mt19937 random(5);
    const int32_t colors = image.GetPaletteSize();
    for (int32_t i = 0; i < colors; ++i) {
        const auto step = static_cast<uint32_t>(i * 255 / (colors - 1));
        const uint32_t color = 0xFF000000 | step << 16 | (255 - step) << 8 | (step / 2);
        ASSERT_TRUE(image.SetPalette(i, 1, &color));
    }
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const auto wave = [&](double a, double b) {
                return static_cast<uint32_t>(120 + 100 * std::sin(x * a + y * b)) +
                       static_cast<uint32_t>(random() % 8);
            };
            const uint32_t alpha = flags ? static_cast<uint32_t>(x * 4) : 255;
            ASSERT_TRUE(image.SetPixel(
                x, y, alpha << 24 | wave(.05, .02) << 16 | wave(.01, .07) << 8 | wave(.03, -.03)));
        }
}

// --- decoders

class ImageDecoders : public testing::Test {
protected:
    // Made once for all processes that the tests run in.
    static void SetUpTestSuite() {
        const std::filesystem::path folder(VL_PICTURES);
        if (exists(folder / "made")) return;
        ASSERT_EQ(std::system("bash '" VL_MAKE_PICTURES "' '" VL_PICTURES "' --reference"), 0);
        std::ofstream(folder / "made").put('\n');
    }
    static Bytes Picture(const std::string& name) {
        return FileBytes((std::filesystem::path(VL_PICTURES) / name).string());
    }
};

// The greatest step between a channel of the image and of reference pixels of red, green, blue and alpha,
// of which 8 bits count.
int GreatestStep(const CImage& image, const Bytes& reference) {
    int greatest = 0;
    const int32_t width = image.GetWidth();
    for (int32_t i = 0; i < width * image.GetHeight(); ++i) {
        const uint32_t color = image.GetPixel(i % width, i / width);
        const uint32_t channels[] = {color >> 16 & 255, color >> 8 & 255, color & 255, color >> 24};
        for (size_t c = 0; c < 4; ++c)
            greatest = std::max(greatest, std::abs(static_cast<int>(channels[c]) -
                                                   reference[static_cast<size_t>(i) * 8 + c * 2]));
    }
    return greatest;
}

TEST_F(ImageDecoders, GivePixelsFormatsAndPalettesThatAnotherDecoderGives) {
    struct Row {
        const char* name;
        int32_t bits;
        int32_t palette;  // entries, 0 for none; -1: some number
        bool alpha = false;
        int step = 0;
    };
    const Row rows[] = {
        {"rgb.jpg", 24, 0, false, 1},
        {"progressive.jpg", 24, 0, false, 1},
        {"grey.jpg", 8, 256, false, 1},
        {"cmyk.jpg", 32, 0, false, 1},
        {"grey1.png", 1, 2},
        {"grey2.png", 8, 4},
        {"grey4.png", 4, 16},
        {"grey8.png", 8, 256},
        {"grey16.png", 32, 0},
        {"palette1.png", 1, 2},
        {"palette2.png", 8, 4},
        {"palette4.png", 4, -1},
        {"palette8.png", 8, -1},
        {"rgb8.png", 24, 0},
        {"rgb16.png", 32, 0},
        {"rgba8.png", 32, 0, true},
        {"rgba16.png", 32, 0, true},
        {"greya8.png", 32, 0, true},
        {"greya16.png", 32, 0, true},
        {"interlaced.png", 32, 0, true},
        {"interlaced4.png", 4, -1},
        {"palettea8.png", 8, -1},
        {"keyed8.png", 32, 0, true},
        {"colors256.gif", 8, 256},
        {"colors5.gif", 8, 8},
        {"interlaced256.gif", 8, 256},
        {"cut.gif", 8, 256},
        {"pal1.bmp", 1, 2},
        {"pal4.bmp", 4, 16},
        {"pal8.bmp", 8, 256},
        {"core8.bmp", 8, 256},
        {"rle8.bmp", 8, 256},
        {"rgb555.bmp", 16, 0},
        {"rgb565.bmp", 16, 0},
        {"argb4444.bmp", 32, 0, true, 15},  // ImageMagick doesn't stretch 15 to 255
        {"rgb24.bmp", 24, 0},
        {"argb32.bmp", 32, 0, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CImage image;
        const std::string name = row.name;
        const Bytes reference = Picture(name.substr(0, name.find('.')) + ".rgba");
        ASSERT_EQ(reference.size(), size_t{61} * 43 * 8);
        ASSERT_EQ(LoadBytes(image, Picture(row.name)), S_OK);
        ASSERT_EQ(image.GetWidth(), 61);
        ASSERT_EQ(image.GetHeight(), 43);
        EXPECT_EQ(image.GetBPP(), row.bits);
        EXPECT_EQ(image.HasAlpha() != 0, row.alpha);
        const int32_t colors = image.GetPaletteSize();
        EXPECT_TRUE(row.palette < 0 ? colors > 0 : colors == row.palette) << colors;
        EXPECT_LE(GreatestStep(image, reference), row.step);
    }
}

TEST_F(ImageDecoders, AGifsFrameLiesWhereItsScreenHasIt) {
    CImage frame;
    CImage screen;
    ASSERT_EQ(LoadBytes(frame, Picture("cut.gif")), S_OK);
    ASSERT_EQ(LoadBytes(screen, Picture("offset.gif")), S_OK);
    ASSERT_TRUE(screen.GetWidth() == 80 && screen.GetHeight() == 60);
    for (int32_t i = 0; i < 61 * 43; ++i)
        ASSERT_EQ(screen.GetPixel(i % 61 + 7, i / 61 + 5), frame.GetPixel(i % 61, i / 61)) << i;
    for (const auto& [x, y] : {std::pair{6, 20}, {68, 20}, {20, 4}, {20, 48}, {0, 0}, {79, 59}})
        EXPECT_EQ(screen.GetPixel(x, y) >> 24, 0U) << x << " " << y;
}

TEST_F(ImageDecoders, RefuseEveryPictureThatIsCutOffAndEveryStreamThatFails) {
    CImage keeper;  // so that the library isn't started for each file
    LoadBytes(keeper, {});
    for (const char* name : {"rgb.jpg", "progressive.jpg", "cmyk.jpg", "palettea8.png", "interlaced4.png",
                             "rle8.bmp", "pal1.bmp", "core8.bmp"}) {
        const Bytes whole = Picture(name);
        for (size_t size = 0; size < whole.size(); ++size) {
            CImage image;
            ASSERT_LT(
                LoadBytes(image, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))), 0)
                << name << " " << size;
            ASSERT_TRUE(image.IsNull());
        }
    }
    // A later frame's bytes may be missing; those of the first may not.
    const Bytes gif = Picture("colors5.gif");
    for (size_t size = 0; size < gif.size(); ++size) {
        CImage image;
        const bool whole = size >= gif.size() - 1;
        ASSERT_EQ(
            LoadBytes(image, Bytes(gif.begin(), gif.begin() + static_cast<std::ptrdiff_t>(size))) == S_OK,
            whole)
            << size;
    }
    const Bytes large = Picture("rgb24.bmp");  // more than one block of the stream
    for (const uint64_t call : {uint64_t{0}, uint64_t{1}}) {
        ByteStream stream(large);
        stream.failFromCall = call;
        CImage image;
        EXPECT_LT(image.Load(&stream), 0);
        ByteStream slow(large);
        slow.shortCall = call;  // fewer bytes than asked for is no end
        EXPECT_EQ(image.Load(&slow), S_OK);
    }
}

TEST_F(ImageDecoders, SurviveEveryByteThatIsWrong) {
    CImage keeper;
    LoadBytes(keeper, {});
    for (const char* name : {"grey.jpg", "palette1.png", "colors5.gif", "pal1.bmp", "core8.bmp"}) {
        const Bytes whole = Picture(name);
        for (size_t i = 0; i < std::min<size_t>(whole.size(), 1200); ++i)
            for (const int change : {0x01, 0x80, 0xFF}) {
                Bytes broken = whole;
                broken[i] = static_cast<uint8_t>(broken[i] ^ change);
                CImage image;
                const HRESULT result = LoadBytes(image, broken);  // a code, or some picture
                ASSERT_EQ(image.IsNull() != 0, result < 0) << name << " " << i;
            }
    }
}

// --- bitmaps, which can be written down

// A bitmap file with an info header. `size` is of the picture; `rest` are palette and pixels.
Bytes Bitmap(int32_t width, int32_t height, uint16_t bits, uint32_t compression, uint32_t colors,
             const Bytes& rest) {
    Bytes file(54 + rest.size());
    file[0] = 'B';
    file[1] = 'M';
    StoreLE32(&file[10], 54 + colors * 4);
    StoreLE32(&file[14], 40);
    StoreLE32(&file[18], static_cast<uint32_t>(width));
    StoreLE32(&file[22], static_cast<uint32_t>(height));
    StoreLE16(&file[26], 1);
    StoreLE16(&file[28], bits);
    StoreLE32(&file[30], compression);
    StoreLE32(&file[46], colors);
    std::copy(rest.begin(), rest.end(), file.begin() + 54);
    return file;
}

// The pixels as palette indices of a palette 0, 1, 2, …, row by row; empty if the file is refused.
std::string Indices(uint16_t bits, int32_t width, int32_t height, uint32_t compression, Bytes pixels) {
    Bytes rest;
    for (uint8_t i = 0; i < 16; ++i) rest.insert(rest.end(), {i, 0, 0, 0});
    rest.insert(rest.end(), pixels.begin(), pixels.end());
    CImage image;
    if (LoadBytes(image, Bitmap(width, height, bits, compression, 16, rest)) != S_OK) return "";
    std::string text;
    for (int32_t y = 0; y < image.GetHeight(); ++y)
        for (int32_t x = 0; x < width; ++x) text += "0123456789ABCDEF"[image.GetPixel(x, y) & 15];
    return text;
}

TEST(ImageBitmaps, RowsRunEitherWayAndRunLengthsStayInsideThePicture) {
    EXPECT_EQ(Indices(4, 3, 2, 0, {0x12, 0x30, 0, 0, 0x45, 0x60, 0, 0}), "456123");
    EXPECT_EQ(Indices(4, 3, -2, 0, {0x12, 0x30, 0, 0, 0x45, 0x60, 0, 0}), "123456");
    // A run, a new row, a row of single pixels, a move to the right, the end.
    EXPECT_EQ(Indices(4, 5, 2, 2, {5, 0x12, 0, 0, 0, 3, 0x45, 0x60, 0, 2, 1, 0, 1, 0x70, 0, 1}),
              "4560712121");
    EXPECT_EQ(Indices(8, 3, 2, 1, {2, 9, 0, 0, 0, 3, 1, 2, 3, 0, 0, 1}), "123990");
    EXPECT_EQ(Indices(8, 3, 2, 1, {200, 9, 0, 0, 0, 4, 1, 2, 3, 4, 0, 2, 255, 0, 1, 5, 0, 1}), "123999");
    for (const Bytes& outside : {Bytes{0, 0, 0, 0, 1, 1, 0, 1}, Bytes{0, 2, 0, 2, 1, 1, 0, 1}, Bytes{3, 1}})
        EXPECT_EQ(Indices(8, 3, 2, 1, outside), "");
    EXPECT_EQ(Indices(8, 3, -2, 1, {3, 1, 0, 1}), "");  // coded rows run upwards alone
}

TEST(ImageBitmaps, RefuseSizesAndTablesThatCantBeBeforeMemoryIsTaken) {
    const Bytes rest(64);
    struct Row {
        int32_t width;
        int32_t height;
        uint16_t bits;
        uint32_t compression;
        uint32_t colors;
    };
    for (const Row& row : {Row{0, 1, 24, 0, 0},
                           {1, 0, 24, 0, 0},
                           {-1, 1, 24, 0, 0},
                           {32768, 1, 1, 0, 2},
                           {1, INT32_MIN, 24, 0, 0},
                           {30000, 30000, 24, 0, 0},
                           {1, 1, 2, 0, 4},
                           {1, 1, 8, 0, 257},
                           {1, 1, 8, 2, 2},
                           {1, 1, 24, 4, 0},
                           {1, 1, 32, 3, 0}}) {
        CImage image;
        EXPECT_LT(LoadBytes(image, Bitmap(row.width, row.height, row.bits, row.compression, row.colors,
                                          row.compression == 3 ? Bytes(16, 0x55) : rest)),
                  0)
            << row.width << " " << row.height << " " << row.bits;
    }
    Bytes far = Bitmap(1, 1, 24, 0, 0, rest);
    StoreLE32(&far[10], 53);  // the pixels would begin inside the header
    CImage image;
    EXPECT_LT(LoadBytes(image, far), 0);
    StoreLE32(&far[10], 0xFFFFFFFF);
    EXPECT_LT(LoadBytes(image, far), 0);
}

// --- the object

TEST(Image, FormatsGoOutAndComeBackAsTheyWere) {
    const TempFolder folder;
    struct Row {
        int32_t bits;
        DWORD flags;
        const char* name;
        int32_t backBits;
        double quality;  // decibels; 0: equal
    };
    for (const Row& row : {Row{1, 0, "a.PNG", 1, 0},
                           {4, 0, "a.png", 4, 0},
                           {8, 0, "a.png", 8, 0},
                           {16, 0, "a.png", 24, 0},
                           {24, 0, "a.png", 24, 0},
                           {32, 0, "a.png", 24, 0},
                           {32, 1, "a.png", 32, 0},
                           {1, 0, "a.bmp", 1, 0},
                           {4, 0, "a.bmp", 4, 0},
                           {8, 0, "a.dib", 8, 0},
                           {16, 0, "a.bmp", 16, 0},
                           {24, 0, "a.bmp", 24, 0},
                           {32, 0, "a.bmp", 32, 0},
                           {32, 1, "a.bmp", 32, 0},
                           {24, 0, "a.jpg", 24, 35},
                           {32, 1, "a.Jpeg", 24, 35},
                           {16, 0, "a.jpe", 24, 35},
                           {8, 0, "a.jfif", 24, 30}}) {
        SCOPED_TRACE(std::string(row.name) + " " + std::to_string(row.bits));
        CImage image;
        Paint(image, row.bits, row.flags);
        ASSERT_EQ(image.Save(folder.Wide(row.name).c_str(), nullptr), S_OK);
        CImage back;
        ASSERT_EQ(LoadBytes(back, FileBytes(folder.Native(row.name))), S_OK);
        EXPECT_EQ(back.GetBPP(), row.backBits);
        double error = 0;
        for (int32_t i = 0; i < 61 * 43; ++i) {
            const uint32_t was = image.GetPixel(i % 61, i / 61);
            const uint32_t is = back.GetPixel(i % 61, i / 61);
            ASSERT_TRUE(row.quality > 0 || is == was) << i;
            for (int shift = 0; shift < 24; shift += 8)
                error += std::pow(double(was >> shift & 255) - double(is >> shift & 255), 2);
        }
        const double quality =
            10 * std::log10(255.0 * 255 * 61 * 43 * 3 / error);  // endless where all is equal
        EXPECT_GT(quality, row.quality);
    }
}

TEST(Image, TheLibraryComesWithTheFirstUseAndGoesWithTheLastImage) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(AnyImageLibraryIsMapped());
        auto first = std::make_unique<CImage>();
        Paint(*first, 24);
        EXPECT_FALSE(AnyImageLibraryIsMapped());  // pixels alone need none
        EXPECT_LT(LoadBytes(*first, {}), 0);
        EXPECT_EQ(first->GetWidth(), 61);  // what a failed load leaves
        const std::unique_ptr<CImage> second(VlCreateImage());
        first.reset();
        EXPECT_TRUE(IsMapped("libvlimage") && IsMapped("libjpeg") && IsMapped("libpng") &&
                    IsMapped("libgif"));
    }
    EXPECT_FALSE(AnyImageLibraryIsMapped());
}

TEST(Image, RefusesWhatCantBe) {
    const TempFolder folder;
    CImage image;
    const std::u16string path = folder.Wide("a.png");
    EXPECT_LT(image.Save(path.c_str(), nullptr), 0);  // empty
    EXPECT_EQ(image.GetBits(), nullptr);
    EXPECT_EQ(image.Load(nullptr), E_POINTER);
    EXPECT_EQ(image.Save(nullptr, nullptr), E_POINTER);
    for (const auto& [width, height, bits, flags] : {std::array{0, 1, 24, 0},
                                                     {1, -1, 24, 0},
                                                     {32768, 1, 1, 0},
                                                     {32767, 32767, 8, 0},
                                                     {1, 1, 2, 0},
                                                     {1, 1, 24, 1}})
        EXPECT_FALSE(image.Create(width, height, bits, static_cast<DWORD>(flags)));
    ASSERT_TRUE(image.Create(3, 2, 4, 0));
    EXPECT_EQ(image.GetPitch(), 4);
    uint32_t colors[17] = {};
    EXPECT_FALSE(image.SetPalette(0, 17, colors) || image.GetPalette(-1, 1, colors) ||
                 image.GetPalette(16, INT32_MAX, colors));
    EXPECT_FALSE(image.SetPixel(3, 0, 1) || image.SetPixel(0, -1, 1));
    EXPECT_EQ(image.GetPixel(0, 2), 0U);
    for (const char* name : {"a", "a.gif", "a.pn", "nowhere/a.png"})
        EXPECT_LT(image.Save(folder.Wide(name).c_str(), nullptr), 0) << name;
    EXPECT_EQ(image.Save(folder.Wide("a").c_str(), &IMAGE_FORMAT_PNG), S_OK);
    EXPECT_EQ(FileBytes(folder.Native("a"))[1], 'P');
    for (const char* name : {"a.png", "a.jpg", "a.bmp"}) {  // a disk that is full
        const WithFaults faults({.callsUntilError = 0, .error = ENOSPC});
        EXPECT_LT(image.Save(folder.Wide(name).c_str(), nullptr), 0) << name;
    }
    image.Destroy();
    EXPECT_TRUE(image.IsNull());
}

TEST(TempFile, IsItsOwnersAloneAndStaysSoWhenItIsWritten) {
    const mode_t mask = umask(0);
    WCHAR path[1040];
    ASSERT_TRUE(VlCreateTempFile(u"vltest", u".png", path, 1040));
    CImage image;
    Paint(image, 24);
    EXPECT_EQ(image.Save(path, nullptr), S_OK);
    umask(mask);
    struct stat status = {};
    const std::string name = Utf::ToUtf8(path);
    ASSERT_EQ(stat(name.c_str(), &status), 0) << name;
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_GT(status.st_size, 100);
    EXPECT_TRUE(DeleteFileW(path));
    EXPECT_FALSE(DeleteFileW(path));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(VlCreateTempFile(u"vltest", u".png", path, 10));
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_FALSE(VlCreateTempFile(u"no/folder", u".png", path, 1040));
}

// The library comes and goes under eight threads that know nothing of one another.
TEST(ImageThreads, ImagesComeAndGoOnAnyThread) {
    std::vector<std::thread> threads;
    for (int32_t number = 0; number < 8; ++number)
        threads.emplace_back([number] {
            const TempFolder folder;
            for (int32_t turn = 0; turn < 10; ++turn) {
                CImage image;
                Paint(image, 24, 0, 8 + number, 8 + turn);
                EXPECT_EQ(image.Save(folder.Wide("a.png").c_str(), nullptr), S_OK);
                CImage back;
                EXPECT_EQ(LoadBytes(back, FileBytes(folder.Native("a.png"))), S_OK);
                EXPECT_EQ(back.GetWidth(), 8 + number);
            }
        });
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
