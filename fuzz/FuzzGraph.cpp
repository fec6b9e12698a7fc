// Audio that has to be decoded: a sound head of each codec, with any numbers in it, and any bytes after it,
// by a path and as a stream. It ends, and never says that it read more than it was asked for.
#include "AudioCodec/wave/CACStreamReader.h"
#include "fuzz/ScriptBytes.h"
#include "platform/com/RefPtr.h"
#include "riff/WaveTypes.h"
#include "tests/support/ByteStream.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

struct Codec {
    uint16_t tag;
    uint16_t bits;
    uint16_t align;          // of one channel; 0: by the bits
    std::string_view extra;  // after the fixed part
};
using namespace std::literals;
constexpr Codec kCodecs[] = {
    {1, 24, 0, {}},
    {1, 32, 0, {}},
    {3, 32, 0, {}},
    {3, 64, 0, {}},
    {6, 8, 0, {}},
    {7, 8, 0, {}},
    {2, 4, 256, "\xF4\1\7\0\0\1\0\0\0\2\0\xFF\0\0\0\0\xC0\0\x40\0\xF0\0\0\0\xCC\1\x30\xFF\x88\1\x18\xFF"sv},
    {0x11, 4, 256, "\xF9\1"sv},
    {0x31, 0, 65, "\x40\1"sv},
    {0x50, 0, 1, "\2\0\0\xE8\3\0\1\0\1\0\x1C\0\0\0\0\0\0\0\0\0\0\0"sv},
    {0x55, 0, 1, "\1\0\2\0\0\0\xD1\0\1\0\x71\5"sv},
    {0x45, 4, 1, {}},
    {0xFFFE, 24, 0, "\x18\0\3\0\0\0\1\0\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71"sv},
};
constexpr std::string_view kAifcTags[] = {"NONE", "sowt", "fl32", "fl64", "alaw",
                                          "ulaw", "ima4", "MAC3", "GSM ", "raw "};

std::vector<uint8_t> WaveOf(ScriptBytes& script, const Codec& codec) {
    const auto channels = static_cast<uint16_t>(1 + script.Next() % 3);
    const uint32_t rate = 100 * (1 + script.Next16() % 1000);
    const auto align = static_cast<uint16_t>((codec.align != 0 ? codec.align : codec.bits / 8) * channels);
    WavImage record =
        None().Word16(codec.tag).Word16(channels).Word32(rate).Word32(rate * align).Word16(align);
    record.Word16(codec.bits).Word16(static_cast<uint16_t>(codec.extra.size())).Bytes(codec.extra);
    std::string head = record.Text();
    // Now and then a number of it is any other.
    for (uint32_t left = script.Next() % 4; left != 0; --left)
        head[2 + script.Next() % (head.size() - 2)] = static_cast<char>(script.Next());
    const uint32_t told = script.Next16();
    const std::string audio = script.Text(1 << 16);
    WavImage image;
    image.Chunk("fmt ", head);
    if (told % 3 == 0) image.Header("fact", 4).Word32(told);
    return image.Header("data", told % 2 == 0 ? static_cast<uint32_t>(audio.size()) : told << told % 17)
        .Bytes(audio)
        .Image();
}

WavImage BigEndian(uint32_t value) {
    WavImage word = None();
    for (int shift = 24; shift >= 0; shift -= 8)
        word.Bytes(std::string(1, static_cast<char>(value >> shift)));
    return word;
}

std::vector<uint8_t> AiffOf(ScriptBytes& script, std::string_view codec) {
    std::string common = "\0\1\0\0\0\0\0\x10\x40\x0E\xAC\x44\0\0\0\0\0\0"s;
    common[1] = static_cast<char>(1 + script.Next() % 3);
    common[7] = static_cast<char>(8 * (1 + script.Next() % 4));
    common += codec;
    common += "\0\0"s;
    common.replace(2, 4, BigEndian(script.Next16()).Text());
    for (uint32_t left = script.Next() % 4; left != 0; --left)
        common[script.Next() % common.size()] = static_cast<char>(script.Next());
    const std::string audio = script.Text(1 << 16);
    const auto size = static_cast<uint32_t>(audio.size());
    WavImage image = None().Bytes("FORM").Bytes(BigEndian(size + 54).Text()).Bytes("AIFC");
    image.Bytes("COMM").Bytes(BigEndian(static_cast<uint32_t>(common.size())).Text()).Bytes(common);
    image.Bytes("SSND").Bytes(BigEndian(size + 8).Text()).Bytes(std::string(8, '\0')).Bytes(audio);
    return image.Image();
}

void Drain(IAC3StreamReader& reader, ScriptBytes& script) {
    uint32_t channels = 0, rate = 0, bytes = 0;
    const uint32_t wish = script.Next();
    if (wish % 3 == 0) reader.SetOutputFormat(1 + wish % 2, 100 * (1 + script.Next()), 2);
    reader.GetOutputFormat(&channels, &rate, &bytes);
    if (channels == 0 || channels > 64) return;
    int64_t position = 0;
    for (uint32_t frames = 1, blocks = 0; frames != 0 && blocks < 50; ++blocks) {
        const uint32_t asked = 1 + script.Next() * 8;
        std::vector<int16_t> buffer(size_t{asked} * channels);
        if (reader.Read(buffer.data(), asked, &frames, nullptr) != RESULT_OK) break;
        Check(frames <= asked, "no more is read than was asked for");
        if (script.Next() == 7) reader.Seek(script.Next() % 3, script.Next16(), &position);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptBytes script(data, size);
    ScriptBytes steps = script.Part(kHead);
    const uint32_t kind = steps.Next() % (std::size(kCodecs) + std::size(kAifcTags));
    const bool isWave = kind < std::size(kCodecs);
    const std::vector<uint8_t> image =
        isWave ? WaveOf(script, kCodecs[kind]) : AiffOf(script, kAifcTags[kind - std::size(kCodecs)]);
    const ScopedFile file(image, isWave ? ".wav" : ".aiff");
    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    ScriptBytes failing = steps.Part(2);
    {
        const FailureByScript failure(failing);
        reader->Open(file.Wide().c_str(), OPEN_READ_ONLY);
    }
    if (reader->Open(file.Wide().c_str(), OPEN_READ_ONLY) != RESULT_OK) return 0;
    Drain(*reader, steps);
    reader->Close();
    ByteStream stream(image);
    if (steps.Next() % 4 == 0) stream.failFromCall = steps.Next();
    if (reader->OpenStream(&stream, 0) == RESULT_OK) Drain(*reader, steps);
    reader->Close();
    return 0;
}
