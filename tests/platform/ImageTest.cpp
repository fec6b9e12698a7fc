// Decoders against another decoder's pixels, encoders against the decoders, and bytes that are no pictures.
#include "platform/base/Types.h"
#include "platform/image/Image.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/base/Utf.h"
#include "platform/file/File.h"
#include "platform/file/TempFile.h"
#include "riff/ByteOrder.h"
#include "tests/platform/SystemFaults.h"
#include "tests/support/ByteStream.h"
#include "tests/support/Painting.h"
#include "tests/support/ScopedFile.h"

namespace {

using Bytes = std::vector<uint8_t>;
using ImagePtr = std::unique_ptr<CImage>;

HRESULT LoadBytes(CImage& image, const Bytes& bytes) {
    ByteStream stream(bytes);
    return image.Load(&stream);
}

// --- decoders

constexpr int32_t kWidth = 29;  // of the pictures that are made
constexpr int32_t kHeight = 19;

class ImageDecoders : public testing::Test {  // CTest makes the pictures before
protected:
    ImageDecoders() { LoadBytes(*m_keeper, {}); }
    static Bytes Picture(const std::string& name) {
        return FileContents<Bytes>(std::filesystem::path(VL_PICTURES) / name);
    }

    const ImagePtr m_keeper{VlCreateImage()};  // so that the library isn't started for each file
};

TEST_F(ImageDecoders, GivePixelsFormatsAndPalettesThatAnotherDecoderGives) {
    const struct {
        int32_t bits;
        int32_t palette;  // entries, 0 for none; -1: some number
        bool alpha;
        std::vector<std::string> names;
    } formats[] = {
        {1, 2, false, {"grey1.png", "palette1.png", "pal1.bmp"}},
        {4, 16, false, {"grey4.png", "pal4.bmp"}},
        {4, -1, false, {"palette4.png", "interlaced4.png"}},
        {8, 4, false, {"grey2.png", "palette2.png"}},
        {8, 8, false, {"colors5.gif"}},
        {8, 256, false, {"grey.jpg", "grey8.png", "colors256.gif", "interlaced256.gif", "cut.gif"}},
        {8, 256, false, {"pal8.bmp", "core8.bmp", "rle8.bmp"}},
        {8, -1, false, {"palette8.png", "palettea8.png"}},
        {16, 0, false, {"rgb555.bmp", "rgb565.bmp"}},
        {24, 0, false, {"rgb.jpg", "progressive.jpg", "rgb8.png", "rgb24.bmp"}},
        {32, 0, false, {"cmyk.jpg", "grey16.png", "rgb16.png"}},
        {32, 0, true, {"rgba8.png", "rgba16.png", "greya8.png", "greya16.png", "interlaced.png"}},
        {32, 0, true, {"keyed8.png", "argb4444.bmp", "argb32.bmp"}},
    };
    for (const auto& format : formats)
        for (const std::string& name : format.names) {
            SCOPED_TRACE(name);
            const ImagePtr imageOwner(VlCreateImage());
            CImage& image = *imageOwner;
            const Bytes reference = Picture(name.substr(0, name.find('.')) + ".rgba");
            ASSERT_EQ(reference.size(), size_t{kWidth} * kHeight * 8);
            ASSERT_EQ(LoadBytes(image, Picture(name)), S_OK);
            ASSERT_TRUE(image.GetWidth() == kWidth && image.GetHeight() == kHeight);
            EXPECT_EQ(image.GetBPP(), format.bits);
            EXPECT_EQ(image.HasAlpha() != 0, format.alpha);
            const int32_t colors = image.GetPaletteSize();
            EXPECT_TRUE(format.palette < 0 ? colors > 0 : colors == format.palette) << colors;
            // ImageMagick doesn't stretch 15 to 255.
            const int allowed = name == "argb4444.bmp" ? 15 : name.ends_with(".jpg") ? 1 : 0;
            for (int32_t i = 0; i < kWidth * kHeight; ++i) {
                // 16 bits of red, green, blue and alpha, of which 8 count.
                const uint8_t* at = &reference[static_cast<size_t>(i) * 8];
                const uint32_t color =
                    uint32_t{at[6]} << 24 | uint32_t{at[0]} << 16 | uint32_t{at[2]} << 8 | at[4];
                ASSERT_LE(Step(image.GetPixel(i % kWidth, i / kWidth), color), allowed) << i;
            }
        }
}

TEST_F(ImageDecoders, AGifsFrameLiesWhereItsScreenHasIt) {
    const ImagePtr frameOwner(VlCreateImage());
    CImage& frame = *frameOwner;
    const ImagePtr screenOwner(VlCreateImage());
    CImage& screen = *screenOwner;
    ASSERT_EQ(LoadBytes(frame, Picture("cut.gif")), S_OK);
    ASSERT_EQ(LoadBytes(screen, Picture("offset.gif")), S_OK);
    ASSERT_TRUE(screen.GetWidth() == 40 && screen.GetHeight() == 30);
    for (int32_t i = 0; i < 40 * 30; ++i) {
        const int32_t x = i % 40 - 7;
        const int32_t y = i / 40 - 5;
        const bool inside = x >= 0 && x < kWidth && y >= 0 && y < kHeight;
        const uint32_t color = screen.GetPixel(i % 40, i / 40);
        ASSERT_EQ(inside ? color : color >> 24, inside ? frame.GetPixel(x, y) : 0U) << x << " " << y;
    }
}

// A picture without its end mark is as it was; one that lacks a pixel is refused.
TEST_F(ImageDecoders, RefuseEveryPictureThatLacksAPixelAndNoneThatLacksItsEndMark) {
    constexpr struct {
        const char* name;
        ptrdiff_t endMark;  // bytes
        ptrdiff_t checked;  // of those before it, that hold no pixel at most
    } kRows[] = {{"rgb.jpg", 2, 1},         {"progressive.jpg", 2, 1},   {"grey.jpg", 2, 1},
                 {"palettea8.png", 12, 10}, {"rgb8.png", 12, 10},        {"interlaced4.png", 12, 10},
                 {"colors5.gif", 2, 1},     {"interlaced256.gif", 2, 1}, {"rle8.bmp", 2, 6},
                 {"pal1.bmp", 0, 0}};
    for (const auto& row : kRows) {
        const Bytes whole = Picture(row.name);
        const ImagePtr wanted(VlCreateImage());
        ASSERT_EQ(LoadBytes(*wanted, whole), S_OK);
        for (ptrdiff_t missing = 1; missing <= whole.end() - whole.begin(); ++missing) {
            SCOPED_TRACE(row.name + std::string(" without ") + std::to_string(missing));
            const ImagePtr image(VlCreateImage());
            const HRESULT result = LoadBytes(*image, Bytes(whole.begin(), whole.end() - missing));
            ASSERT_EQ(image->IsNull() != 0, result < 0);
            ASSERT_TRUE(result >= 0 || missing > row.endMark);
            ASSERT_TRUE(result < 0 || missing <= row.endMark + row.checked);
            for (int32_t i = 0; result >= 0 && i < kWidth * kHeight; ++i)
                ASSERT_EQ(image->GetPixel(i % kWidth, i / kWidth), wanted->GetPixel(i % kWidth, i / kWidth))
                    << i;
        }
    }
    // A JPEG's end that stands where its pixels should.
    const Bytes whole = Picture("rgb.jpg");
    Bytes early(whole.begin(), whole.end() - 100);
    early.insert(early.end(), {0xFF, 0xD9});
    const ImagePtr imageOwner(VlCreateImage());
    CImage& image = *imageOwner;
    EXPECT_LT(LoadBytes(image, early), 0);
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
    const ImagePtr imageOwner(VlCreateImage());
    CImage& image = *imageOwner;
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
    const ImagePtr imageOwner(VlCreateImage());
    CImage& image = *imageOwner;
    const struct {
        int32_t width, height;
        uint16_t bits;
        uint32_t compression, colors;
    } rows[] = {{0, 1, 24, 0, 0},         {1, 0, 24, 0, 0},         {-1, 1, 24, 0, 0}, {32768, 1, 1, 0, 2},
                {1, INT32_MIN, 24, 0, 0}, {30000, 30000, 24, 0, 0}, {1, 1, 2, 0, 4},   {1, 1, 8, 0, 257},
                {1, 1, 8, 2, 2},          {1, 1, 24, 4, 0},         {1, 1, 32, 3, 4}};
    for (const auto& row : rows) {
        const Bytes rest = row.compression == 3 ? Bytes(2000, 0x55) : Bytes(2000);
        EXPECT_LT(
            LoadBytes(image, Bitmap(row.width, row.height, row.bits, row.compression, row.colors, rest)), 0)
            << row.width << " " << row.height << " " << row.bits;
    }
    Bytes far = Bitmap(1, 1, 24, 0, 0, Bytes(64));
    for (const uint32_t place : {53U, 0xFFFFFFFFU}) {  // the pixels would begin inside the header, or nowhere
        StoreLE32(&far[10], place);
        EXPECT_LT(LoadBytes(image, far), 0);
    }
}

// --- the object

TEST(Image, FormatsGoOutAndComeBackAsTheyWere) {
    const TempFolder folder;
    const struct {
        int32_t bits;
        DWORD flags;
        const char* name;
        int32_t backBits;
        int step;  // at most; 0: equal, in alpha too
    } rows[] = {{1, 0, "a.PNG", 1, 0},     {4, 0, "a.png", 4, 0},    {8, 0, "a.png", 8, 0},
                {16, 0, "a.png", 24, 0},   {24, 0, "a.png", 24, 0},  {32, 0, "a.png", 24, 0},
                {32, 1, "a.png", 32, 0},   {1, 0, "a.bmp", 1, 0},    {4, 0, "a.bmp", 4, 0},
                {8, 0, "a.dib", 8, 0},     {16, 0, "a.bmp", 16, 0},  {24, 0, "a.bmp", 24, 0},
                {32, 0, "a.bmp", 32, 0},   {32, 1, "a.bmp", 32, 0},  {24, 0, "a.jpg", 24, 20},
                {32, 1, "a.Jpeg", 24, 20}, {16, 0, "a.jpe", 24, 20}, {8, 0, "a.jfif", 24, 40}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.name) + " " + std::to_string(row.bits));
        const ImagePtr imageOwner(VlCreateImage());
        CImage& image = *imageOwner;
        Paint(image, 61, 43, row.bits, row.flags);
        const uint32_t glass = 0x7F112233;  // which the palette of a PNG keeps
        if (std::string_view(row.name) == "a.png" && image.SetPalette(0, 1, &glass))
            image.SetPixel(0, 0, glass);
        ASSERT_EQ(image.Save(folder.Wide(row.name).c_str(), nullptr), S_OK);
        const ImagePtr backOwner(VlCreateImage());
        CImage& back = *backOwner;
        ASSERT_EQ(LoadBytes(back, FileContents<Bytes>(folder.Native(row.name))), S_OK);
        EXPECT_EQ(back.GetBPP(), row.backBits);
        for (int32_t i = 0; i < 61 * 43; ++i) {
            const uint32_t alpha = row.step > 0 ? 0xFF000000 : 0;
            const uint32_t was = image.GetPixel(i % 61, i / 61) | alpha;
            ASSERT_LE(Step(was, back.GetPixel(i % 61, i / 61)), row.step) << i;
        }
    }
}

TEST(Image, RefusesWhatLiesOutsideAndKeepsWhatItHas) {
    const ImagePtr imageOwner(VlCreateImage());
    CImage& image = *imageOwner;
    EXPECT_EQ(image.Load(nullptr), E_POINTER);
    EXPECT_EQ(image.Save(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(image.GetBits(), nullptr);
    ASSERT_TRUE(image.Create(3, 2, 4, 0));
    const std::array<int32_t, 3> rows[] = {{1, -1, 24}, {32768, 1, 1}, {32767, 32767, 8}, {1, 1, 2}};
    for (const auto& [width, height, bits] : rows) EXPECT_FALSE(image.Create(width, height, bits, 0));
    uint32_t colors[17] = {};
    EXPECT_FALSE(image.SetPalette(0, 17, colors) || image.GetPalette(-1, 1, colors) ||
                 image.GetPalette(16, INT32_MAX, colors));
    EXPECT_FALSE(image.SetPixel(3, 0, 1) || image.SetPixel(0, -1, 1));
    EXPECT_EQ(image.GetPixel(0, 2), 0U);
    ByteStream failing(Bytes(100, 'B'));
    failing.failFromCall = 0;
    EXPECT_LT(image.Load(&failing), 0);
    EXPECT_TRUE(image.GetWidth() == 3 && image.GetPitch() == 4);
    const TempFolder folder;
    for (const char* name : {"a.png", "a.jpg", "a.bmp"}) {  // a disk that is full
        const WithFaults faults({.callsUntilError = 0, .error = ENOSPC});
        EXPECT_LT(image.Save(folder.Wide(name).c_str(), nullptr), 0) << name;
    }
}

TEST(TempFile, IsItsOwnersAloneAlsoWhenItIsWritten) {
    const mode_t mask = umask(0);
    WCHAR path[1040];
    ASSERT_TRUE(VlCreateTempFile(u"vltest", u".bmp", path, 1040));
    const ImagePtr imageOwner(VlCreateImage());
    CImage& image = *imageOwner;
    Paint(image, 5, 4);
    EXPECT_EQ(image.Save(path, nullptr), S_OK);
    umask(mask);
    struct stat status = {};
    ASSERT_EQ(stat(Utf::ToUtf8(path).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_TRUE(DeleteFileW(path));
}

}  // namespace
