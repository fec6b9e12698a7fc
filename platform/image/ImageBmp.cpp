// BMP, which needs no library: 1, 4, 8, 16, 24 and 32 bits, plain, run-length coded or with masks.
#include <algorithm>
#include <bit>
#include <iterator>
#include <vector>

#include "platform/image/ImageCodecs.h"
#include "riff/ByteOrder.h"

namespace {

constexpr uint32_t kFileHeaderSize = 14;
constexpr uint32_t kCoreHeaderSize = 12;  // the oldest form: 16-bit sizes, palette entries of 3 bytes
constexpr uint32_t kInfoHeaderSize = 40;
constexpr uint32_t kV4HeaderSize = 108;
constexpr uint32_t kHeaderSizes[] = {kCoreHeaderSize, kInfoHeaderSize, 52, 56, 64, kV4HeaderSize, 124};
constexpr uint32_t kMaxHeaderSize = 124;
constexpr uint32_t kMasksPlace = 40;  // in the header where it has them, else after it

enum Compression : uint32_t { kPlain = 0, kRunLength8 = 1, kRunLength4 = 2, kMasks = 3, kMasksWithAlpha = 6 };

struct Masks {
    uint32_t red, green, blue, alpha;
    bool operator==(const Masks&) const = default;
};
constexpr Masks kMasks555 = {0x7C00, 0x3E0, 0x1F, 0};
constexpr Masks kMasks565 = {0xF800, 0x7E0, 0x1F, 0};
constexpr Masks kMasks888 = {0xFF0000, 0xFF00, 0xFF, 0};
constexpr Masks kMasks8888 = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};

// The file in a form that all headers come to.
struct BmpHeader {
    uint32_t size = 0;    // bytes of the header after the file header
    uint32_t offset = 0;  // of the pixels, from the start of the file
    int64_t width = 0;
    int64_t height = 0;
    bool topDown = false;
    uint32_t bits = 0;
    uint32_t compression = kPlain;
    uint32_t colors = 0;  // palette entries; 0: as many as the bits can name
    Masks masks = {};
    uint32_t place = 0;  // bytes read so far
};

// The kinds of pixels that there are, and what they are kept as; others are converted or refused.
struct KindRow {
    uint32_t bits;
    uint32_t compression;
    Masks masks;  // those that a header of this kind stands for, or must have
    PixelFormat format;
};
constexpr KindRow kKinds[] = {
    {1, kPlain, {}, PixelFormat::Indexed1},       {4, kPlain, {}, PixelFormat::Indexed4},
    {8, kPlain, {}, PixelFormat::Indexed8},       {4, kRunLength4, {}, PixelFormat::Indexed4},
    {8, kRunLength8, {}, PixelFormat::Indexed8},  {16, kPlain, {}, PixelFormat::Rgb555},
    {24, kPlain, {}, PixelFormat::Rgb24},         {32, kPlain, {}, PixelFormat::Rgb32},
    {16, kMasks, kMasks555, PixelFormat::Rgb555}, {16, kMasks, kMasks565, PixelFormat::Rgb565},
    {32, kMasks, kMasks888, PixelFormat::Rgb32},  {32, kMasks, kMasks8888, PixelFormat::Argb32},
};

// --- decoding

Masks LoadMasks(const uint8_t* bytes, bool withAlpha) {
    return {LoadLE32(bytes), LoadLE32(bytes + 4), LoadLE32(bytes + 8), withAlpha ? LoadLE32(bytes + 12) : 0};
}

void LoadCore(const uint8_t* bytes, BmpHeader& header) {
    header.width = LoadLE16(bytes + 4);
    header.height = LoadLE16(bytes + 6);
    header.bits = LoadLE16(bytes + 10);
}

void LoadInfo(const uint8_t* bytes, BmpHeader& header) {
    header.width = static_cast<int32_t>(LoadLE32(bytes + 4));
    header.height = static_cast<int32_t>(LoadLE32(bytes + 8));
    header.topDown = header.height < 0;
    if (header.topDown) header.height = -header.height;
    header.bits = LoadLE16(bytes + 14);
    header.compression = LoadLE32(bytes + 16);
    header.colors = LoadLE32(bytes + 32);
}

// The masks stand in a header that is large enough, else after it. From here on they are told by one kind.
bool ReadMasks(ImageSource& source, const uint8_t* bytes, BmpHeader& header) {
    if (header.compression != kMasks && header.compression != kMasksWithAlpha) return true;
    const bool withAlpha = header.compression == kMasksWithAlpha || header.size > 52;
    header.compression = kMasks;
    if (header.size > kInfoHeaderSize) {
        if (header.size == 64) return false;  // another family of headers, in which 3 is no mask
        header.masks = LoadMasks(bytes + kMasksPlace, withAlpha);
        return true;
    }
    uint8_t behind[16] = {};
    const uint32_t size = withAlpha ? 16 : 12;
    if (!source.ReadAll(behind, size)) return false;
    header.masks = LoadMasks(behind, withAlpha);
    header.place += size;
    return true;
}

bool ReadHeader(ImageSource& source, BmpHeader& header) {
    uint8_t bytes[std::max(kMaxHeaderSize, kFileHeaderSize)] = {};
    if (!source.ReadAll(bytes, kFileHeaderSize)) return false;
    header.offset = LoadLE32(bytes + 10);
    if (!source.ReadAll(bytes, 4)) return false;
    header.size = LoadLE32(bytes);
    if (std::find(std::begin(kHeaderSizes), std::end(kHeaderSizes), header.size) == std::end(kHeaderSizes))
        return false;
    if (!source.ReadAll(bytes + 4, header.size - 4)) return false;
    header.place = kFileHeaderSize + header.size;
    header.size == kCoreHeaderSize ? LoadCore(bytes, header) : LoadInfo(bytes, header);
    return header.width > 0 && header.width <= kMaxImageSide && header.height > 0 &&
           header.height <= kMaxImageSide && ReadMasks(source, bytes, header);
}

// After the header, as far as there is room in front of the pixels.
bool ReadPalette(ImageSource& source, BmpHeader& header, Raster& raster) {
    const uint32_t entrySize = header.size == kCoreHeaderSize ? 3 : 4;
    const uint32_t most = 1u << header.bits;
    if (header.colors > most || header.offset < header.place) return false;
    const uint32_t room = (header.offset - header.place) / entrySize;
    raster.paletteSize = std::min(header.colors ? header.colors : most, room);
    if (raster.paletteSize == 0) return false;
    for (uint32_t i = 0; i < raster.paletteSize; ++i) {
        uint8_t entry[4];
        if (!source.ReadAll(entry, entrySize)) return false;
        raster.palette[i] = PackColor(entry[2], entry[1], entry[0]);
    }
    header.place += raster.paletteSize * entrySize;
    return true;
}

// Where the next row of the file belongs.
uint32_t RowOf(const BmpHeader& header, const Raster& raster, uint32_t number) {
    return header.topDown ? number : raster.height - 1 - number;
}

bool ReadPlainRows(ImageSource& source, const BmpHeader& header, Raster& raster) {
    for (uint32_t i = 0; i < raster.height; ++i)
        if (!source.ReadAll(raster.Row(RowOf(header, raster, i)), raster.pitch)) return false;
    return true;
}

// One channel of a pixel with unusual masks, as 8 bits: short ones are repeated downwards.
uint32_t Channel(uint32_t pixel, uint32_t mask) {
    if (mask == 0) return 0;
    const int bits = std::popcount(mask);
    uint64_t value = (pixel & mask) >> std::countr_zero(mask);
    if (bits >= 8) return static_cast<uint32_t>(value >> (bits - 8));
    int have = bits;
    for (; have < 8; have += bits) value = value << bits | (value & ((1u << bits) - 1));
    return static_cast<uint32_t>(value >> (have - 8));
}

bool IsOneRun(uint32_t mask) {
    const uint32_t run = mask >> (mask ? std::countr_zero(mask) : 0);
    return (run & (run + 1)) == 0;
}

bool ReadMaskedRows(ImageSource& source, const BmpHeader& header, Raster& raster) {
    const Masks& masks = header.masks;
    const uint32_t bytes = header.bits / 8;
    std::vector<uint8_t> row((size_t{raster.width} * bytes + 3) / 4 * 4);
    for (uint32_t i = 0; i < raster.height; ++i) {
        if (!source.ReadAll(row.data(), row.size())) return false;
        for (uint32_t x = 0; x < raster.width; ++x) {
            const uint8_t* at = row.data() + size_t{x} * bytes;
            const uint32_t pixel = bytes == 2 ? LoadLE16(at) : LoadLE32(at);
            raster.SetColor(x, RowOf(header, raster, i),
                            PackColor(Channel(pixel, masks.red), Channel(pixel, masks.green),
                                      Channel(pixel, masks.blue), Channel(pixel, masks.alpha)));
        }
    }
    return true;
}

// Run-length coded rows, bottom-up. What is skipped stays 0; pixels to the right of the
// image are dropped, since encoders code the padding too, and those above it are refused. A file may end
// without its end mark once its last row is full.
class RunLengthReader {
public:
    RunLengthReader(ImageSource& source, Raster& raster)
        : m_source(source), m_raster(raster), m_nibbles(raster.BitsPerPixel() == 4) {}

    bool Read() {
        uint8_t code[2];
        while (m_source.ReadAll(code, 2)) {
            if (code[0] == 0 && code[1] == kEndOfImage) return true;
            if (!(code[0] != 0 ? PutRun(code[0], code[1]) : Escape(code[1]))) return false;
        }
        return m_row + (m_x >= m_raster.width ? 1u : 0u) >= m_raster.height;
    }

private:
    enum Code : uint8_t { kEndOfRow = 0, kEndOfImage = 1, kMove = 2 };  // a higher one: so many pixels follow

    bool Escape(uint8_t code) {
        if (code == kEndOfRow) {
            m_x = 0;
            ++m_row;
            return true;
        }
        return code == kMove ? Move() : PutPixels(code);
    }
    bool Move() {
        uint8_t step[2];
        if (!m_source.ReadAll(step, 2)) return false;
        m_x += step[0];
        m_row += step[1];
        return true;
    }
    bool PutRun(uint32_t count, uint8_t value) {
        for (uint32_t i = 0; i < count; ++i) {
            if (!Put(value, i)) return false;
            if (m_x >= m_raster.width) break;  // the rest is dropped
        }
        return true;
    }
    bool PutPixels(uint32_t count) {
        uint8_t values[256];
        const uint32_t bytes = m_nibbles ? (count + 1) / 2 : count;
        if (!m_source.ReadAll(values, bytes + (bytes & 1))) return false;
        for (uint32_t i = 0; i < count; ++i)
            if (!Put(values[m_nibbles ? i / 2 : i], i)) return false;
        return true;
    }
    // Of a byte with two pixels those of even number are the high half.
    bool Put(uint8_t value, uint32_t number) {
        if (m_row >= m_raster.height) return false;
        if (m_x >= m_raster.width) return true;
        uint8_t* row = m_raster.Row(m_raster.height - 1 - m_row);
        if (m_nibbles) {
            const uint32_t pixel = number % 2 == 0 ? value >> 4 : value & 15;
            uint8_t& byte = row[m_x / 2];
            byte = static_cast<uint8_t>(m_x % 2 == 0 ? (byte & 0x0F) | pixel << 4 : (byte & 0xF0) | pixel);
        } else {
            row[m_x] = value;
        }
        ++m_x;
        return true;
    }

    ImageSource& m_source;
    Raster& m_raster;
    const bool m_nibbles;
    uint64_t m_x = 0;
    uint32_t m_row = 0;  // from the bottom
};

// The format to keep the pixels in; None for a kind that isn't read.
PixelFormat FormatFor(const BmpHeader& header, bool& converted) {
    converted = false;
    for (const KindRow& row : kKinds)
        if (row.bits == header.bits && row.compression == header.compression && row.masks == header.masks)
            return row.format;
    const Masks& masks = header.masks;
    converted = header.compression == kMasks && (header.bits == 16 || header.bits == 32);
    for (const uint32_t mask : {masks.red, masks.green, masks.blue, masks.alpha})
        converted = converted && IsOneRun(mask);
    if (!converted) return PixelFormat::None;
    return masks.alpha ? PixelFormat::Argb32 : PixelFormat::Rgb32;
}

// --- encoding

bool Write(const ImageTarget& target, const uint8_t* bytes, size_t size) {
    return target.write(target.context, bytes, static_cast<uint32_t>(size));
}

// Which header and masks each format goes out with.
struct HeaderRow {
    PixelFormat format;
    uint32_t size;
    Compression compression;
    Masks masks;
    uint32_t masksBehind;  // bytes
};
constexpr HeaderRow kHeaders[] = {
    {PixelFormat::Indexed1, kInfoHeaderSize, kPlain, {}, 0},
    {PixelFormat::Indexed4, kInfoHeaderSize, kPlain, {}, 0},
    {PixelFormat::Indexed8, kInfoHeaderSize, kPlain, {}, 0},
    {PixelFormat::Rgb555, kInfoHeaderSize, kPlain, {}, 0},
    {PixelFormat::Rgb565, kInfoHeaderSize, kMasks, kMasks565, 12},
    {PixelFormat::Rgb24, kInfoHeaderSize, kPlain, {}, 0},
    {PixelFormat::Rgb32, kInfoHeaderSize, kPlain, {}, 0},
    {PixelFormat::Argb32, kV4HeaderSize, kMasks, kMasks8888, 0},
};

std::vector<uint8_t> MakeHeader(const Raster& raster, const HeaderRow& how) {
    constexpr uint32_t kStandardColors = 0x73524742;  // the V4 colour space "sRGB"
    const uint32_t colors = raster.IsIndexed() ? 1u << raster.BitsPerPixel() : 0;
    const uint32_t offset = kFileHeaderSize + how.size + how.masksBehind + colors * 4;
    const auto pixels = static_cast<uint32_t>(raster.pitch * raster.height);
    std::vector<uint8_t> bytes(offset);
    uint8_t* at = bytes.data();
    StoreLE16(at, 0x4D42);  // "BM"
    StoreLE32(at + 2, offset + pixels);
    StoreLE32(at + 10, offset);
    at += kFileHeaderSize;
    StoreLE32(at, how.size);
    StoreLE32(at + 4, raster.width);
    StoreLE32(at + 8, raster.height);  // bottom-up
    StoreLE16(at + 12, 1);             // plane
    StoreLE16(at + 14, static_cast<uint16_t>(raster.BitsPerPixel()));
    StoreLE32(at + 16, how.compression);
    StoreLE32(at + 20, pixels);
    StoreLE32(at + 32, colors);
    if (how.compression == kMasks) {
        const uint32_t masks[] = {how.masks.red, how.masks.green, how.masks.blue, how.masks.alpha};
        for (size_t i = 0; i < (how.masksBehind ? 3 : 4); ++i) StoreLE32(at + kMasksPlace + 4 * i, masks[i]);
    }
    if (how.size == kV4HeaderSize) StoreLE32(at + 56, kStandardColors);
    for (size_t i = 0; i < colors; ++i)
        StoreLE32(at + how.size + how.masksBehind + 4 * i, raster.palette[i] & 0xFFFFFF);
    return bytes;
}

}  // namespace

HRESULT DecodeBmp(ImageSource& source, Raster& raster) {
    BmpHeader header;
    if (!ReadHeader(source, header)) return E_FAIL;
    bool converted = false;
    const PixelFormat format = FormatFor(header, converted);
    const bool coded = header.compression == kRunLength8 || header.compression == kRunLength4;
    if (format == PixelFormat::None || (coded && header.topDown)) return E_FAIL;
    const HRESULT allocated =
        raster.Allocate(static_cast<uint32_t>(header.width), static_cast<uint32_t>(header.height), format);
    if (FAILED(allocated)) return allocated;
    if (raster.IsIndexed() && !ReadPalette(source, header, raster)) return E_FAIL;
    if (header.offset < header.place || !source.Skip(header.offset - header.place)) return E_FAIL;
    const bool done = coded       ? RunLengthReader(source, raster).Read()
                      : converted ? ReadMaskedRows(source, header, raster)
                                  : ReadPlainRows(source, header, raster);
    return done ? S_OK : E_FAIL;
}

HRESULT EncodeBmp(const Raster& raster, const ImageTarget& target) {
    for (const HeaderRow& how : kHeaders) {
        if (how.format != raster.format) continue;
        const std::vector<uint8_t> header = MakeHeader(raster, how);
        bool done = Write(target, header.data(), header.size());
        for (uint32_t y = raster.height; done && y-- > 0;) done = Write(target, raster.Row(y), raster.pitch);
        return done ? S_OK : E_FAIL;
    }
    return E_FAIL;
}
