#include "tests/hostile/Bytes.h"
#include "tests/hostile/HostileFile.h"

using namespace Bytes;

namespace {

size_t s_many = 0;  // a million, or fewer where time is short

std::string Chunk(const std::string& id, const std::string& content) {
    return id + Big(content.size(), 4) + content + Zeros(content.size() & 1);
}
std::string Form(const std::string& type, const std::string& chunks) {
    return "FORM" + Big(chunks.size() + 4, 4) + type + chunks;
}

struct Format {
    uint32_t channels = 2, frames = 1024, bits = 16, exponent = 0x400E;
    uint64_t mantissa = 0xAC44000000000000;  // of the rate, with the exponent: 44100
    std::string codec = {};                  // and its name
};
std::string Common(const Format& format) {
    return Chunk("COMM", Big(format.channels, 2) + Big(format.frames, 4) + Big(format.bits, 2) +
                             Big(format.exponent, 2) + Big(format.mantissa, 8) + format.codec);
}
std::string Sound(const std::string& audio) { return Chunk("SSND", Zeros(8) + audio); }

const std::string kCommon = Common({});
const std::string kSound = Sound(Zeros(4096));

void AddCounted(HostileFiles& files) {
    const auto add = [&](const std::string& name, const std::function<std::string()>& make) {
        files.push_back({name, ".aif", [make] { return Form("AIFF", kCommon + make() + kSound); }});
    };
    add("a million empty chunks", [] { return Repeat(s_many, Chunk("abcd", "")); });
    add("a million formats", [] { return Repeat(s_many, kCommon); });
    add("a million sounds", [] { return Repeat(s_many, Sound("")); });
    add("a million annotations", [] { return Repeat(s_many, Chunk("ANNO", "a")); });
    add("a million empty annotations", [] { return Repeat(s_many, Chunk("ANNO", "")); });
    add("a million names", [] { return Repeat(s_many, Chunk("NAME", "a")); });
    add("a million authors", [] { return Repeat(s_many, Chunk("AUTH", "a")); });
    add("a million comment chunks", [] { return Repeat(s_many, Chunk("COMT", Zeros(2))); });
    add("a million comments", [] { return Chunk("COMT", Big(65535, 2) + Repeat(s_many, Zeros(8))); });
    add("a million markers", [] { return Chunk("MARK", Big(65535, 2) + Repeat(s_many, Zeros(8))); });
    add("a million versions", [] { return Repeat(s_many, Chunk("FVER", Zeros(4))); });
    add("a name of 4 million bytes", [] { return Chunk("NAME", std::string(4 * s_many, 'x')); });
    add("a tag chunk of a million frames", [] {
        return Chunk("ID3 ",
                     "ID3\3" + Zeros(2) + std::string("\7\x7F\x7F\x7F", 4) +
                         Repeat(s_many / 2, "TXXX" + Big(4, 4) + Zeros(2) + std::string("\0a\0b", 4)));
    });
    add("2000 forms in forms", [] {
        std::string nested = kCommon + kSound;
        for (int depth = 0; depth < 2000; ++depth) nested = Form("AIFF", nested);
        return nested;
    });
}

void AddSizes(HostileFiles& files) {
    for (const uint64_t size : {0ull, 1ull, 0x7FFFFFFFull, 0xFFFFFFF8ull, 0xFFFFFFFFull}) {
        const auto add = [&](const char* what, const std::string& image) {
            files.push_back(
                {std::to_string(size) + " bytes told: " + what, ".aif", [image] { return image; }});
        };
        const std::string told = Big(size, 4);
        add("the file", "FORM" + told + "AIFF" + kCommon + kSound);
        add("the format", Form("AIFF", "COMM" + told + kCommon.substr(8) + kSound));
        add("the sound", Form("AIFF", kCommon + "SSND" + told + Zeros(4096)));
        add("the sound's offset", Form("AIFF", kCommon + Chunk("SSND", told + Zeros(4) + Zeros(4096))));
        add("frames", Form("AIFF", Common({.frames = static_cast<uint32_t>(size)}) + kSound));
        add("a name", Form("AIFF", kCommon + "NAME" + told + "abcd" + kSound));
    }
}

void AddFormats(HostileFiles& files) {
    const auto add = [&](const std::string& name, const std::string& type, const Format& format) {
        files.push_back({name, ".aif", [=] { return Form(type, Common(format) + Sound(Zeros(1 << 20))); }});
    };
    add("nothing wrong", "AIFF", {});
    for (const uint32_t bits : {0u, 8u, 16u, 24u, 32u, 65535u})
        for (const uint32_t channels : {0u, 65535u})
            add(std::to_string(channels) + " channels of " + std::to_string(bits) + " bits", "AIFF",
                {.channels = channels, .bits = bits});
    for (const uint32_t exponent : {0u, 0x3FFFu, 0x401Eu, 0x403Eu, 0x7FFFu, 0x8000u, 0xFFFFu})
        for (const uint64_t mantissa : {uint64_t{0}, UINT64_MAX})
            add("a rate of " + std::to_string(exponent) + (mantissa == 0 ? " and 0" : " and ones"), "AIFF",
                {.exponent = exponent, .mantissa = mantissa});
    for (const char* codec :
         {"NONE", "sowt", "twos", "in24", "in32", "42n1", "23ni", "fl32", "fl64", "alaw", "ulaw",
          "ima4", "GSM ", "MAC3", "MAC6", "QDM2", "QDMC", "Qclp", "G722", ".mp3", "????"}) {
        add(std::string("codec ") + codec, "AIFC", {.codec = codec + std::string("\1a", 2)});
        add(std::string("codec ") + codec + " of 65535 channels", "AIFC",
            {.channels = 65535, .codec = codec + std::string("\1a", 2)});
    }
    add("a codec's name that reaches past its chunk", "AIFC",
        {.codec = "sowt\xFF"
                  "ab"});
}

}  // namespace

HostileFiles HostileAiffs(size_t many) {
    s_many = many;
    HostileFiles files;
    AddCounted(files);
    AddSizes(files);
    AddFormats(files);
    const std::string image =
        Form("AIFC", Chunk("FVER", Big(0xA2805140, 4)) + Common({.codec = std::string("sowt\0\0", 6)}) +
                         Sound(Zeros(8)));
    for (size_t size = 0; size < image.size(); size += s_many < kAll ? 8 : 1)
        files.push_back(
            {"cut at byte " + std::to_string(size), ".aif", [image, size] { return image.substr(0, size); }});
    return files;
}
