#include <zlib.h>

#include <algorithm>

#include "tests/hostile/Bytes.h"
#include "tests/hostile/HostileFile.h"

using namespace Bytes;

namespace {

size_t s_many = 0;  // a million, or fewer where time is short

std::string Chunk(const std::string& id, const std::string& content) {
    return id + Little(content.size(), 4) + content + Zeros(content.size() & 1);
}
std::string Head(const std::string& id, uint64_t size) { return id + Little(size, 4); }
std::string Wave(const std::string& chunks) {
    return "RIFF" + Little(chunks.size() + 4, 4) + "WAVE" + chunks;
}

struct Format {
    uint32_t tag = 1, channels = 2, rate = 44100, bits = 16, align = 4;
    std::string extra = {};
};
std::string Fmt(const Format& format) {
    const std::string record = Little(format.tag, 2) + Little(format.channels, 2) + Little(format.rate, 4) +
                               Little(uint64_t{format.rate} * format.align, 4) + Little(format.align, 2) +
                               Little(format.bits, 2);
    const bool plain = format.tag == 1 && format.extra.empty();
    return Chunk("fmt ", plain ? record : record + Little(format.extra.size(), 2) + format.extra);
}
const std::string kFmt = Fmt({});
const std::string kAudio = Chunk("data", Zeros(4096));
const std::string kFmt24 = Fmt({.bits = 24, .align = 6});  // decoded, not read directly

// So many zeros, packed.
std::string Packed(size_t count) {
    uLongf size = compressBound(count);
    std::string packed(size, '\0');
    const std::string plain = Zeros(count);
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(plain.data()),
             plain.size());
    packed.resize(size);
    return packed;
}

std::string List(const std::string& entries) { return Chunk("LIST", "INFO" + entries); }
// A name and a value of one letter each.
const std::string kEntry = "n=\xFF\xFE" + std::string("v\0\0\0", 4);

// All chunks both for what the module reads by itself and for what it decodes.
void AddBoth(HostileFiles& files, const std::string& name, const std::function<std::string()>& make,
             size_t kept = 0) {
    files.push_back({name, ".wav", [make] { return Wave(kFmt + make() + kAudio); }, kept});
    files.push_back({name + ", 24 bits", ".wav", [make] { return Wave(kFmt24 + make() + kAudio); }, kept});
}

void AddCounted(HostileFiles& files) {
    AddBoth(files, "a million empty chunks", [] { return Repeat(s_many, Head("abcd", 0)); });
    AddBoth(files, "a million odd chunks", [] { return Repeat(s_many, Chunk("abcd", "x")); });
    AddBoth(files, "a million formats", [] { return Repeat(s_many, kFmt); });
    AddBoth(files, "a million facts", [] { return Repeat(s_many, Chunk("fact", Zeros(4))); });
    AddBoth(files, "a million audio chunks", [] { return Repeat(s_many, Chunk("data", Zeros(4))); });
    AddBoth(files, "a million empty audio chunks", [] { return Repeat(s_many, Head("data", 0)); });
    AddBoth(files, "a million lists", [] { return Repeat(s_many, List("")); });
    AddBoth(files, "a million lists of a title", [] { return Repeat(s_many, List(Chunk("INAM", "a"))); });
    AddBoth(files, "a million lists of another type", [] { return Repeat(s_many, Chunk("LIST", "adtl")); });
    AddBoth(files, "a million fillers", [] { return Repeat(s_many, Chunk("JUNK", "")); });
    AddBoth(files, "a million unfinished lists", [] { return Repeat(s_many, Chunk(Zeros(4), "INFO")); });
    AddBoth(
        files, "a million list entries of one id", [] { return List(Repeat(s_many, Chunk("INAM", "a"))); },
        10 * s_many);
    AddBoth(
        files, "a million list entries of no bytes", [] { return List(Repeat(s_many, Chunk("ISFT", ""))); },
        8 * s_many);
    AddBoth(
        files, "400000 list entries, each with an id of its own",
        [] { return List(Each(s_many * 2 / 5, [](size_t i) { return Chunk(IdOf(i), "a"); })); }, 4 * s_many);
    AddBoth(
        files, "400000 list entries, ids descending",
        [] {
            return List(Each(s_many * 2 / 5, [](size_t i) { return Chunk(IdOf(s_many * 2 / 5 - i), "a"); }));
        },
        4 * s_many);
    AddBoth(
        files, "a million named tags", [] { return List(Chunk("vltg", Repeat(s_many, kEntry) + Zeros(1))); },
        8 * s_many);
    AddBoth(
        files, "a million titles among named tags",
        [] {
            return List(
                Chunk("vltg", Repeat(s_many, "title=\xFF\xFE" + std::string("v\0\0\0", 4)) + Zeros(1)));
        },
        12 * s_many);
    AddBoth(
        files, "a million named tags without name and value",
        [] { return List(Chunk("vltg", Repeat(s_many, "=\xFF\xFE" + Zeros(2)) + Zeros(1))); }, 5 * s_many);
    AddBoth(
        files, "named tags without an end",
        [] { return List(Chunk("vltg", "a=\xFF\xFE" + std::string(4 * s_many, 'x'))); }, 4 * s_many);
    AddBoth(
        files, "a name without an end", [] { return List(Chunk("vltg", std::string(4 * s_many, 'x'))); },
        4 * s_many);
    AddBoth(
        files, "a title of 4 million letters",
        [] { return List(Chunk("INAM", std::string(4 * s_many, 'x'))); }, 16 * s_many);
    AddBoth(
        files, "a title of 4 million bytes that are no text",
        [] { return List(Chunk("INAM", std::string(4 * s_many, '\x81'))); }, 24 * s_many);
    AddBoth(
        files, "a date of 4 million digits", [] { return List(Chunk("ICRD", std::string(4 * s_many, '1'))); },
        16 * s_many);
    AddBoth(
        files, "a track of 4 million digits",
        [] { return List(Chunk("IARL", std::string(4 * s_many, '1'))); }, 16 * s_many);
    AddBoth(files, "100000 cue points",
            [] { return Chunk("cue ", Little(s_many / 10, 4) + Zeros(s_many / 10 * 24)); });
    AddBoth(files, "100000 labels",
            [] { return Chunk("LIST", "adtl" + Repeat(s_many / 10, Chunk("labl", "\1\0\0\0a"))); });
    AddBoth(files, "100000 regions and loops", [] {
        return Chunk("LIST", "adtl" + Repeat(s_many / 10, Chunk("ltxt", Zeros(20)))) +
               Chunk("smpl", Zeros(28) + Little(s_many / 10, 4) + Zeros(4) + Zeros(s_many / 10 * 24));
    });
    AddBoth(files, "counts of points and loops that lie", [] {
        return Chunk("cue ", Repeat(7, "\xFF\xFF\xFF\xFF")) + Chunk("smpl", std::string(61, '\xFF')) +
               Chunk("cue ", "\xFF") + Chunk("plst", std::string(17, '\xFF')) + Chunk("bext", Zeros(345)) +
               Chunk("LIST", "adtl" + Head("ltxt", 0xFFFFFFFF) + Zeros(9));
    });
    AddBoth(files, "a coding history without an end",
            [] { return Chunk("bext", Zeros(602) + std::string(4 * s_many, 'x')); });
    AddBoth(files, "an ID3 tag that unpacks to 6 GiB", [] {
        const std::string frame = Packed(size_t{64} << 20);
        return Chunk("id3 ", "ID3\3" + Zeros(2) + std::string("\7\x7F\x7F\x7F", 4) +
                                 Repeat(100, "TIT2" + Big(frame.size() + 4, 4) + Zeros(1) + "\x80" +
                                                 Big(size_t{64} << 20, 4) + frame));
    });
    for (const char version : {'\2', '\3', '\4'})
        AddBoth(files, std::string("a million ID3 frames of version ") + static_cast<char>('0' + version),
                [version] {
                    const std::string frame =
                        version == 2 ? "COM" + Big(6, 3) + std::string("\0eng\0a", 6)
                                     : "COMM" + Big(6, 4) + Zeros(2) + std::string("\0eng\0a", 6);
                    return Chunk("id3 ", "ID3" + std::string(1, version) + Zeros(2) +
                                             std::string("\7\x7F\x7F\x7F", 4) + Repeat(s_many, frame));
                });
    AddBoth(
        files, "an ID3 text of 4 million letters",
        [] {
            return Chunk("id3 ", "ID3\3" + Zeros(2) + std::string("\7\x7F\x7F\x7F", 4) + "TIT2" +
                                     Big(4 * s_many + 1, 4) + Zeros(3) + std::string(4 * s_many, 'x'));
        },
        4 * s_many);
    AddBoth(files, "100000 broadcast records",
            [] { return Repeat(s_many / 10, Chunk("bext", Zeros(602))).substr(0, 8'000'000); });
}

void AddSizes(HostileFiles& files) {
    for (const uint64_t size :
         {0ull, 1ull, 3ull, 0x7FFFFFFFull, 0x80000000ull, 0xFFFFFFF8ull, 0xFFFFFFFEull, 0xFFFFFFFFull}) {
        const std::string told = std::to_string(size) + " bytes told: ";
        const auto add = [&](const char* what, const std::string& image) {
            files.push_back({told + what, ".wav", [image] { return image; }});
        };
        const std::string record = kFmt.substr(8);
        add("the file", "RIFF" + Little(size, 4) + "WAVE" + kFmt + kAudio);
        add("the format", Wave(Head("fmt ", size) + record + kAudio));
        add("the audio", Wave(kFmt + Head("data", size) + Zeros(4096)));
        add("audio that is decoded", Wave(kFmt24 + Head("data", size) + Zeros(4096)));
        add("a list", Wave(kFmt + kAudio + Head("LIST", size) + "INFO" + Chunk("INAM", "a")));
        add("a list entry", Wave(kFmt + kAudio + List(Head("INAM", size) + "abcd")));
        add("named tags", Wave(kFmt + kAudio + List(Head("vltg", size) + kEntry)));
        add("any chunk", Wave(kFmt + kAudio + Head("abcd", size) + "abcd"));
    }
    std::string nested = Chunk("INAM", "a");
    for (int depth = 0; depth < 2000; ++depth) nested = List(nested);
    files.push_back({"2000 lists in lists", ".wav", [nested] { return Wave(kFmt + nested + kAudio); }});
    files.push_back(
        {"2000 lists in lists, decoded", ".wav", [nested] { return Wave(kFmt24 + nested + kAudio); }});
    files.push_back(
        {"a file in a file", ".wav", [] { return Wave(Wave(kFmt + kAudio) + Wave(kFmt + kAudio)); }});
}

void AddFormats(HostileFiles& files) {
    const auto add = [&](const std::string& name, const Format& format) {
        files.push_back(
            {name, ".wav", [format] { return Wave(Fmt(format) + Chunk("data", Zeros(1 << 20))); }});
    };
    for (const uint32_t bits : {0u, 1u, 8u, 16u, 24u, 32u, 64u, 65535u}) {
        const std::string wide = ", " + std::to_string(bits) + " bits";
        add("no channels" + wide, {.channels = 0, .bits = bits, .align = 0});
        add("65535 channels" + wide, {.channels = 65535, .bits = bits, .align = 65535 * bits / 8 & 0xFFFF});
    }
    add("nothing wrong", {});
    add("nothing wrong, 24 bits", {.bits = 24, .align = 6});
    add("2048 channels", {.channels = 2048, .align = 4096});
    add("255 channels, 8 bits", {.channels = 255, .bits = 8, .align = 255});
    for (const uint32_t rate : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        add("rate " + std::to_string(rate), {.rate = rate});
        add("rate " + std::to_string(rate) + ", 24 bits", {.rate = rate, .bits = 24, .align = 6});
    }
    for (const uint32_t align : {0u, 1u, 65535u}) {
        const std::string aligned = ", block align " + std::to_string(align);
        add("16 bits" + aligned, {.align = align});
        add("24 bits" + aligned, {.bits = 24, .align = align});
        add("float" + aligned, {.tag = 3, .bits = 32, .align = align});
        add("double" + aligned, {.tag = 3, .bits = 64, .align = align});
        add("MS ADPCM" + aligned, {.tag = 2, .bits = 4, .align = align, .extra = Little(500, 2) + Zeros(30)});
        add("IMA ADPCM" + aligned, {.tag = 0x11, .bits = 4, .align = align, .extra = Little(505, 2)});
        add("A-law" + aligned, {.tag = 6, .bits = 8, .align = align});
        add("mu-law" + aligned, {.tag = 7, .bits = 8, .align = align});
        add("GSM" + aligned,
            {.tag = 0x31, .channels = 1, .rate = 8000, .bits = 0, .align = align, .extra = Little(320, 2)});
        add("MP3" + aligned, {.tag = 0x55, .bits = 0, .align = align, .extra = Zeros(12)});
        add("MP2" + aligned, {.tag = 0x50, .bits = 0, .align = align, .extra = Zeros(22)});
        add("G.726" + aligned, {.tag = 0x45, .channels = 1, .bits = 4, .align = align});
        add("an extensible format" + aligned,
            {.tag = 0xFFFE,
             .align = align,
             .extra = Little(16, 2) + Little(3, 4) + Little(1, 2) + Zeros(14)});
        add("no codec" + aligned, {.tag = 0xABCD, .align = align});
    }
    for (const uint32_t tag : {2u, 3u, 6u, 0x11u, 0x31u, 0x55u, 0xFFFEu})
        add("tag " + std::to_string(tag) + ", 65535 channels",
            {.tag = tag, .channels = 65535, .bits = 8, .align = 65535});
    files.push_back({"a format record of 65535 extra bytes", ".wav",
                     [] { return Wave(Fmt({.tag = 0x55, .bits = 0, .extra = Zeros(65535)}) + kAudio); }});
    files.push_back({"a format record of 4 million bytes", ".wav",
                     [] { return Wave(Chunk("fmt ", kFmt24.substr(8) + Zeros(4 * s_many)) + kAudio); }});
    files.push_back({"MP3 frames of 1 million sync bytes", ".wav", [] {
                         return Wave(Fmt({.tag = 0x55, .bits = 0, .align = 1, .extra = Zeros(12)}) +
                                     Chunk("data", std::string(s_many, '\xFF')));
                     }});
    files.push_back({"an ID3 chunk with a picture of 4 GiB", ".wav", [] {
                         return Wave(kFmt24 +
                                     Chunk("id3 ", "ID3\3" + Zeros(2) + std::string("\x7F\x7F\x7F\x7F", 4) +
                                                       "APIC" + Little(0xFFFFFFFF, 4) + Zeros(64)) +
                                     kAudio);
                     }});
    files.push_back({"an ID3 chunk of a million frames", ".wav", [] {
                         return Wave(kFmt24 +
                                     Chunk("id3 ", "ID3\3" + Zeros(2) + std::string("\7\x7F\x7F\x7F", 4) +
                                                       Repeat(s_many / 2, "TXXX" + Big(4, 4) + Zeros(2) +
                                                                              std::string("\0a\0b", 4))) +
                                     kAudio);
                     }});
}

void AddOthers(HostileFiles& files) {
    const std::string image =
        Wave(kFmt + Chunk("fact", Zeros(4)) + List(Chunk("INAM", "abc") + Chunk("vltg", kEntry)) +
             Chunk("data", Zeros(8)));
    for (size_t size = 0; size < image.size(); size += s_many < kAll ? 8 : 1)
        files.push_back(
            {"cut at byte " + std::to_string(size), ".wav", [image, size] { return image.substr(0, size); }});
    const auto add = [&](const char* name, const std::string& bytes) {
        files.push_back({name, ".wav", [bytes] { return bytes; }});
    };
    add("zeros", Zeros(s_many / 10));
    add("RIFF again and again", Repeat(s_many / 10, "RIFF"));
    add("WAVE again and again", "RIFF" + Repeat(s_many / 10, "WAVE"));
    add("RF64 of sizes that wrap", "RF64" + Little(0xFFFFFFFF, 4) + "WAVE" +
                                       Chunk("ds64", std::string(28, '\xFF')) + kFmt +
                                       Head("data", 0xFFFFFFFF) + Zeros(4096));
    add("ds64 with 4 billion entries", "RF64" + Little(0xFFFFFFFF, 4) + "WAVE" +
                                           Chunk("ds64", Zeros(24) + Little(0xFFFFFFFF, 4)) + kFmt24 +
                                           kAudio);
    add("big-endian", "RIFX" + Big(4096, 4) + "WAVE" + "fmt " + Big(16, 4) + Zeros(16) + "data" +
                          Big(0xFFFFFFFF, 4) + Zeros(4096));
    add("a size of 0 followed by a million chunks",
        Wave(kFmt + Head("data", 0) + Repeat(s_many, Head("abcd", 0))));
    add("sizes of 0 that each look like audio",
        Wave(kFmt + Repeat(s_many / 10, Head("data", 0) + "????\1\0\0\0")));
    add("text", Wave(kFmt + std::string(s_many, 'a')));
}

}  // namespace

HostileFiles HostileWaves(size_t many) {
    s_many = many;
    HostileFiles files;
    AddCounted(files);
    AddSizes(files);
    AddFormats(files);
    AddOthers(files);
    return files;
}
