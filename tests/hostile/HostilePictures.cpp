#include <zlib.h>

#include <stdexcept>

#include "tests/hostile/Bytes.h"
#include "tests/hostile/HostileFile.h"

using namespace Bytes;

namespace {

size_t s_many = 0;  // a million, or fewer where time is short

// Bits into bytes, the first as the lowest or as the highest.
class Bits {
public:
    void PutLow(uint32_t value, int count) {
        for (int i = 0; i < count; ++i) Put(value >> i & 1, static_cast<int>(m_used % 8));
    }
    void PutHigh(uint32_t value, int count) {
        for (int i = count; i-- > 0;) Put(value >> i & 1, 7 - static_cast<int>(m_used % 8));
    }
    std::string Take() { return std::move(m_bytes); }

private:
    void Put(uint32_t bit, int place) {
        if (m_used++ % 8 == 0) m_bytes += '\0';
        m_bytes.back() = static_cast<char>(m_bytes.back() | static_cast<int>(bit << place));
    }

    std::string m_bytes;
    size_t m_used = 0;
};

// --- PNG

std::string PngChunk(const std::string& type, const std::string& content) {
    const std::string covered = type + content;
    const auto sum =
        crc32(0, reinterpret_cast<const Bytef*>(covered.data()), static_cast<uInt>(covered.size()));
    return Big(content.size(), 4) + covered + Big(sum, 4);
}
std::string Deflated(size_t zeros) {
    const std::string bytes = Zeros(zeros);
    uLongf size = compressBound(zeros);
    std::string packed(size, '\0');
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                  reinterpret_cast<const Bytef*>(bytes.data()), zeros, 1) != Z_OK)
        throw std::runtime_error("no deflate");
    packed.resize(size);
    return packed;
}
struct Png {
    uint32_t width = 8, height = 8, depth = 8, color = 2, interlace = 0;
};
std::string PngHead(const Png& png) {
    return "\x89PNG\r\n\x1A\n" + PngChunk("IHDR", Big(png.width, 4) + Big(png.height, 4) + Big(png.depth, 1) +
                                                      Big(png.color, 1) + Zeros(2) + Big(png.interlace, 1));
}
// With as many zeros as there are pixels, or as are told.
std::string PngOf(const Png& png, size_t zeros = 0, const std::string& before = {}) {
    const size_t samples = png.color == 2 ? 3 : png.color == 6 ? 4 : 1;
    const size_t row = 1 + (size_t{png.width} * samples * png.depth + 7) / 8;
    return PngHead(png) + before + PngChunk("IDAT", Deflated(zeros != 0 ? zeros : row * png.height)) +
           PngChunk("IEND", "");
}

void AddPngs(HostileFiles& files) {
    const auto add = [&](const std::string& name, const std::function<std::string()>& make, size_t kept = 0) {
        files.push_back({"PNG, " + name, ".png", make, kept});
    };
    add("nothing wrong", [] { return PngOf({}); });
    add("0 by 0", [] { return PngOf({.width = 0, .height = 0}, 64); });
    add("2 billion by 2 billion", [] { return PngOf({.width = 0x7FFFFFFF, .height = 0x7FFFFFFF}, 64); });
    add("32767 by 32767 of 64 bits, a few bytes",
        [] { return PngOf({.width = 32767, .height = 32767, .depth = 16, .color = 6}, 64); });
    add("32767 by 5000, a few bytes",
        [] { return PngOf({.width = 32767, .height = 5000, .depth = 1, .color = 0}, 64); });
    add(
        "4000 by 4000, black", [] { return PngOf({.width = 4000, .height = 4000, .depth = 8, .color = 0}); },
        16'000'000);
    add(
        "20000 by 20000 of 1 bit, black",
        [] { return PngOf({.width = 20000, .height = 20000, .depth = 1, .color = 0}); }, 50'100'000);
    add("20000 by 20000 of 24 bits, black", [] { return PngOf({.width = 20000, .height = 20000}, 1 << 20); });
    add(
        "interlaced, 4000 by 4000",
        [] {
            return PngOf({.width = 4000, .height = 4000, .depth = 8, .color = 0, .interlace = 1}, 16'100'000);
        },
        16'000'000);
    add("interlaced, 32767 by 32767, a few bytes",
        [] { return PngOf({.width = 32767, .height = 32767, .depth = 1, .color = 0, .interlace = 1}, 64); });
    add("more data than pixels", [] { return PngOf({}, 100 * s_many); });
    add("100000 empty data chunks",
        [] { return PngHead({}) + Repeat(s_many / 10, PngChunk("IDAT", "")) + PngChunk("IEND", ""); });
    add("100000 texts",
        [] { return PngOf({}, 0, Repeat(s_many / 10, PngChunk("tEXt", "a" + std::string("\0b", 2)))); });
    add("a text of 100 million letters",
        [] { return PngOf({}, 0, PngChunk("zTXt", "a" + Zeros(2) + Deflated(100 * s_many))); });
    add("a profile of 100 million bytes",
        [] { return PngOf({}, 0, PngChunk("iCCP", "a" + Zeros(2) + Deflated(100 * s_many))); });
    add("a chunk of 4 GiB", [] { return PngHead({}) + Big(0x7FFFFFFF, 4) + "abcd" + Zeros(64); });
    add("a palette of 300 colours", [] { return PngOf({.color = 3}, 0, PngChunk("PLTE", Zeros(900))); });
}

// --- GIF

// LZW that names one colour over and over: codes 0 to 3 are colours, 4 clears, 5 ends.
std::string GifData(size_t pixels, bool withEnd = true) {
    Bits bits;
    uint32_t next = 6;  // the code that the next one makes
    int width = 3;
    bits.PutLow(4, width);
    bits.PutLow(0, width);
    size_t run = 1;  // pixels that the last code stands for
    for (size_t done = 1; done < pixels;) {
        const uint32_t code = next < 4096 ? next : 4095;
        run = next < 4096 ? run + 1 : run;
        bits.PutLow(code, width);
        done += run;
        if (next < 4096 && ++next == (1u << width) && width < 12) ++width;
    }
    if (withEnd) bits.PutLow(5, width);
    const std::string bytes = bits.Take();
    std::string blocks;
    for (size_t at = 0; at < bytes.size(); at += 255) {
        const std::string block = bytes.substr(at, 255);
        blocks += Little(block.size(), 1) + block;
    }
    return "\2" + blocks + Zeros(1);
}
std::string GifHead(uint32_t width, uint32_t height) {
    return "GIF89a" + Little(width, 2) + Little(height, 2) + "\x81" + Zeros(2) + Repeat(4, "abc");
}
std::string GifFrame(uint32_t width, uint32_t height, uint32_t flags = 0) {
    return "," + Zeros(4) + Little(width, 2) + Little(height, 2) + Little(flags, 1);
}

void AddGifs(HostileFiles& files) {
    const auto add = [&](const std::string& name, const std::function<std::string()>& make, size_t kept = 0) {
        files.push_back({"GIF, " + name, ".gif", make, kept});
    };
    add("nothing wrong", [] { return GifHead(8, 8) + GifFrame(8, 8) + GifData(64) + ";"; });
    add("0 by 0", [] { return GifHead(0, 0) + GifFrame(0, 0) + GifData(16) + ";"; });
    add("65535 by 65535", [] { return GifHead(65535, 65535) + GifFrame(65535, 65535) + GifData(16) + ";"; });
    add("16000 by 16000, a few bytes",
        [] { return GifHead(16000, 16000) + GifFrame(16000, 16000) + GifData(16) + ";"; });
    add(
        "a frame of one pixel on 8000 by 8000",
        [] { return GifHead(8000, 8000) + GifFrame(1, 1) + GifData(1) + ";"; }, 64'000'000);
    add(
        "4000 by 4000, one colour",
        [] { return GifHead(4000, 4000) + GifFrame(4000, 4000) + GifData(16'000'000) + ";"; }, 16'000'000);
    add(
        "interlaced, 4000 by 4000",
        [] { return GifHead(4000, 4000) + GifFrame(4000, 4000, 0x40) + GifData(16'000'000) + ";"; },
        16'000'000);
    add("a frame larger than the screen",
        [] { return GifHead(1, 1) + GifFrame(65535, 65535) + GifData(16) + ";"; });
    add("100000 frames",
        [] { return GifHead(1, 1) + Repeat(s_many / 10, GifFrame(1, 1) + GifData(1)) + ";"; });
    add("a million extensions", [] {
        return GifHead(1, 1) + Repeat(s_many, "!\xFE\1a" + Zeros(1)) + GifFrame(1, 1) + GifData(1) + ";";
    });
    add("an extension of a million blocks", [] {
        return GifHead(1, 1) + "!\xFE" + Repeat(s_many, "\1a") + Zeros(1) + GifFrame(1, 1) + GifData(1) + ";";
    });
    add("a million clear codes", [] {
        Bits bits;
        for (size_t i = 0; i < s_many; ++i) bits.PutLow(4, 3);
        const std::string bytes = bits.Take();
        std::string blocks;
        for (size_t at = 0; at + 255 <= bytes.size(); at += 255) blocks += "\xFF" + bytes.substr(at, 255);
        return GifHead(1000, 1000) + GifFrame(1000, 1000) + "\2" + blocks + Zeros(1) + ";";
    });
    files.back().slower = 5;  // giflib sets its table anew each time
}

// --- JPEG

std::string Segment(uint8_t marker, const std::string& content) {
    return "\xFF" + Big(marker, 1) + Big(content.size() + 2, 2) + content;
}
// One code, of one bit, for one symbol.
std::string Table(uint8_t kind, uint8_t symbol) {
    return Segment(0xC4, Big(kind, 1) + "\1" + Zeros(15) + Big(symbol, 1));
}
std::string JpegHead(uint8_t frame, uint32_t width, uint32_t height, const std::string& channels) {
    return "\xFF\xD8" + Segment(0xDB, Zeros(1) + std::string(64, '\1')) +
           Segment(frame, "\x08" + Big(height, 2) + Big(width, 2) + Big(channels.size() / 3, 1) + channels);
}
const std::string kGrey("\1\x11\0", 3);
std::string Scan(uint8_t first, uint8_t last, uint8_t bits = 0) {
    return Segment(0xDA, Big(1, 1) + "\1" + Zeros(1) + Big(first, 1) + Big(last, 1) + Big(bits, 1));
}
const std::string kEnd = "\xFF\xD9";

// Grey throughout: two bits a block.
std::string GreyJpeg(uint32_t width, uint32_t height) {
    const size_t blocks = size_t{(width + 7) / 8} * ((height + 7) / 8);
    return JpegHead(0xC0, width, height, kGrey) + Table(0, 0) + Table(0x10, 0) + Scan(0, 63) +
           Zeros((blocks * 2 + 7) / 8) + kEnd;
}
// One scan of the mean, then `scans` that say in a few bits that there is nothing else.
std::string ProgressiveJpeg(uint32_t width, uint32_t height, size_t scans) {
    const size_t blocks = size_t{(width + 7) / 8} * ((height + 7) / 8);
    constexpr size_t kRun = 32767;
    Bits bits;
    for (size_t i = 0; i < blocks / kRun + 1; ++i) bits.PutHigh(0x3FFF, 15);  // code 0, and 14 ones
    std::string runs = bits.Take();
    for (size_t at = runs.find('\xFF'); at != runs.npos; at = runs.find('\xFF', at + 2))
        runs.insert(at + 1, 1, '\0');
    std::string image = JpegHead(0xC2, width, height, kGrey) + Table(0, 0) + Scan(0, 0) +
                        Zeros((blocks + 7) / 8) + Table(0x10, 0xE0);
    for (size_t i = 0; i < scans; ++i)
        image += Scan(static_cast<uint8_t>(i % 63 + 1), static_cast<uint8_t>(i % 63 + 1)) + runs;
    return image + kEnd;
}

void AddJpegs(HostileFiles& files) {
    const auto add = [&](const std::string& name, const std::function<std::string()>& make, size_t kept = 0) {
        files.push_back({"JPEG, " + name, ".jpg", make, kept});
    };
    const std::string channels("\1\x11\0\2\x11\0\3\x11\0", 9);
    add("nothing wrong", [] { return GreyJpeg(8, 8); });
    add("0 by 0", [] { return GreyJpeg(0, 0); });
    add("65535 by 65535", [] {
        return JpegHead(0xC0, 65535, 65535, kGrey) + Table(0, 0) + Table(0x10, 0) + Scan(0, 63) + Zeros(100) +
               kEnd;
    });
    add("32767 by 16000, a few bytes", [] {
        return JpegHead(0xC0, 32767, 16000, kGrey) + Table(0, 0) + Table(0x10, 0) + Scan(0, 63) + Zeros(100) +
               kEnd;
    });
    add("progressive, 32767 by 16000, a few bytes",
        [] { return JpegHead(0xC2, 32767, 16000, kGrey) + Table(0, 0) + Scan(0, 0) + Zeros(100) + kEnd; });
    add("progressive in colour, 13000 by 13000, a few bytes", [channels] {
        return JpegHead(0xC2, 13000, 13000, channels) + Table(0, 0) + Scan(0, 0) + Zeros(100) + kEnd;
    });
    add(
        "4000 by 4000, grey", [] { return GreyJpeg(4000, 4000); }, 16'000'000);
    add(
        "progressive, 2000 by 2000, 60 scans", [] { return ProgressiveJpeg(2000, 2000, 60); }, 12'000'000);
    add(
        "progressive, 4000 by 4000, 99 scans", [] { return ProgressiveJpeg(4000, 4000, 99); }, 48'000'000);
    add("progressive, 64 by 64, a million scans", [] { return ProgressiveJpeg(64, 64, s_many / 5); });
    add(
        "a million tables", [] { return "\xFF\xD8" + Repeat(s_many, Table(0, 0)) + kEnd; }, 22 * s_many);
    add("a million comments", [] { return "\xFF\xD8" + Repeat(s_many, Segment(0xFE, "a")) + kEnd; });
    add("4 million fill bytes", [] { return "\xFF\xD8" + std::string(4 * s_many, '\xFF') + kEnd; });
    add("restarts after each block", [] {
        return JpegHead(0xC0, 2000, 2000, kGrey) + Table(0, 0) + Table(0x10, 0) + Segment(0xDD, Big(1, 2)) +
               Scan(0, 63) + Repeat(60'000, Zeros(1) + "\xFF\xD0") + kEnd;
    });
    add("arithmetic coding, 16000 by 16000",
        [] { return JpegHead(0xC9, 16000, 16000, kGrey) + Scan(0, 63) + Zeros(100) + kEnd; });
}

// --- BMP

struct Bmp {
    int64_t width = 8, height = 8;
    uint32_t bits = 24, compression = 0, colors = 0, headerSize = 40, offset = 0;
};
std::string BmpHead(const Bmp& bmp) {
    const uint32_t palette = bmp.bits <= 8 ? 4u << bmp.bits : 0;
    const uint32_t offset = bmp.offset != 0 ? bmp.offset : 54 + palette;
    return "BM" + Zeros(8) + Little(offset, 4) + Little(bmp.headerSize, 4) +
           Little(static_cast<uint64_t>(bmp.width), 4) + Little(static_cast<uint64_t>(bmp.height), 4) +
           Little(1, 2) + Little(bmp.bits, 2) + Little(bmp.compression, 4) + Zeros(12) +
           Little(bmp.colors, 4) + Zeros(4) + Zeros(palette);
}

void AddBmps(HostileFiles& files) {
    const auto add = [&](const std::string& name, const std::function<std::string()>& make, size_t kept = 0) {
        files.push_back({"BMP, " + name, ".bmp", make, kept});
    };
    add("nothing wrong", [] { return BmpHead({}) + Zeros(192); });
    add("0 by 0", [] { return BmpHead({.width = 0, .height = 0}) + Zeros(64); });
    add("2 billion by 2 billion",
        [] { return BmpHead({.width = 0x7FFFFFFF, .height = 0x7FFFFFFF}) + Zeros(64); });
    add("the smallest height there is", [] { return BmpHead({.height = 0x80000000}) + Zeros(64); });
    add("32767 by 5000, a few bytes", [] { return BmpHead({.width = 32767, .height = 5000}) + Zeros(64); });
    add("run-length, 16000 by 16000, over at once", [] {
        return BmpHead({.width = 16000, .height = 16000, .bits = 8, .compression = 1}) +
               std::string("\0\1", 2);
    });
    add("run-length, a million moves", [] {
        return BmpHead({.width = 8, .height = 8, .bits = 8, .compression = 1}) +
               Repeat(s_many, Zeros(1) + "\2\1" + Zeros(1)) + std::string("\0\1", 2);
    });
    add("run-length, a million runs in one row", [] {
        return BmpHead({.width = 8, .height = 8, .bits = 4, .compression = 2}) +
               Repeat(s_many,
                      "\xFF"
                      "a") +
               std::string("\0\1", 2);
    });
    add("run-length, a million row ends", [] {
        return BmpHead({.width = 8, .height = 8, .bits = 8, .compression = 1}) + Repeat(s_many, Zeros(2)) +
               std::string("\0\1", 2);
    });
    add("pixels 4 GiB on", [] { return BmpHead({.offset = 0xFFFFFFFF}) + Zeros(s_many); });
    add("4 billion colours", [] { return BmpHead({.bits = 8, .colors = 0xFFFFFFFF}) + Zeros(64); });
    add("a header of 4 GiB", [] { return BmpHead({.headerSize = 0xFFFFFFFF}) + Zeros(64); });
    add(
        "masks of one bit, 1000 by 1000",
        [] {
            return BmpHead({.width = 1000, .height = 1000, .bits = 32, .compression = 3, .offset = 66}) +
                   Little(1, 4) + Little(2, 4) + Little(4, 4) + Zeros(4'000'000);
        },
        4'000'000);
}

}  // namespace

HostileFiles HostilePictures(size_t many) {
    s_many = many;
    HostileFiles files;
    AddPngs(files);
    AddGifs(files);
    AddJpegs(files);
    AddBmps(files);
    return files;
}
