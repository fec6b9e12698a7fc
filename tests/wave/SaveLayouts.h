// Files that a save has to cope with, and what must hold of any file at any moment of one.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "AudioCodec/wave/riff/CWaveFile.h"
#include "riff/WaveTypes.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace save_test {

using namespace std::string_literals;
using Tags = InfoChunks;

inline const std::string kAudio = "\x81\xF0\3\4zyxw98"s;  // no chunk of its own
inline const Tags kOld{{FourCC("INAM"), "Old"}, {FourCC("ICRD"), "1999"}};

inline WavImage Pcm() { return WavImage().Fmt(1, 1, 8000, 16); }
inline std::string ListOf(const Tags& tags) {
    WavImage list = None().Bytes("INFO");
    for (const auto& [id, value] : tags)
        list.Chunk({reinterpret_cast<const char*>(&id), 4}, value);  // tests run where ids read so
    return list.Text();
}

struct Layout {
    std::string name;
    WavImage image;
    std::string audio = kAudio;
    Tags old = kOld;
    std::string tail = {};  // bytes at the end that are no chunk
};

inline std::vector<Layout> Layouts() {
    const std::string old = ListOf(kOld);
    const auto sound = [](WavImage front) { return front.Chunk("data", kAudio); };
    const auto listed = [&](WavImage front) { return front.Chunk("LIST", old); };
    const WavImage plain = sound(Pcm());
    const std::string odd = kAudio + "\x7F";
    const std::string trailer = "TAGSome title" + std::string(115, 'x');
    const std::string apeTrailer = "APETAGEX"s + std::string(24, '\1');
    const std::string silence(24, '\0');
    std::string lists;  // that nobody may find
    for (int i = 0; i < 60; ++i) lists += "LIST\4\0\0\0INFO"s;
    const WavImage foreign = Pcm().Chunk("fact", "\5\0\0\0"s).Chunk("bext", std::string(602, 'b'));
    const WavImage longRecord = WavImage().Header("fmt ", 40).FormatRecord(0xFFFE, 1, 8000, 16).Word16(22);
    const WavImage record18 = WavImage().Header("fmt ", 18).FormatRecord(1, 1, 8000, 16).Word16(0);
    return {
        {"the writer's own", listed(plain).Sized()},
        {"the writer's own, without a list", WavImage(plain).Sized(), kAudio, {}},
        {"list in front", sound(listed(Pcm())).Sized()},
        {"two lists", listed(sound(Pcm().Chunk("LIST", ListOf({{FourCC("IART"), "x"}})))).Sized()},
        {"two lists in front", sound(listed(Pcm().Chunk("LIST", ListOf({})))).Sized()},
        {"list between", listed(plain).Chunk("cue ", "\0\0\0\0"s).Sized()},
        {"foreign chunks around",
         listed(sound(foreign).Chunk("LIST", "adtlnote").Chunk("smpl", "12345")).Sized()},
        {"foreign chunks after", sound(foreign).Chunk("id3 ", "ID3\4").Sized(), kAudio, {}},
        {"long record",
         listed(sound(WavImage(longRecord).Bytes(std::string(22, 'g')).Chunk("JUNK", "abc"))).Sized()},
        {"record of 18 bytes", listed(sound(record18)).Sized()},
        {"odd audio with a pad byte", listed(Pcm().Chunk("data", odd)).Sized(), odd},
        {"odd audio without", listed(Pcm()).Header("data", 11).Bytes(odd).Sized(), odd},
        {"endless audio", listed(Pcm()).Header("data", 0xFFFFFFFF).Bytes(odd), odd},
        {"audio cut short", Pcm().Header("data", 500).Bytes(odd).Sized(), odd, {}},
        {"audio of a recorder that crashed", listed(Pcm()).Header("data", 0).Bytes(odd), odd},
        {"silence of one", Pcm().Header("data", 0).Bytes(silence), silence, {}},
        {"no audio, list", listed(Pcm().Header("data", 0)).Sized(), ""},
        {"chunk cut short", WavImage(plain).Header("iXML", 900).Bytes("<x/>").Sized(), kAudio, {}},
        {"a few bytes", listed(plain).Bytes("fmt \1").Sized(), kAudio, kOld, "fmt \1"},
        {"trailer", listed(plain).Sized().Bytes(trailer), kAudio, kOld, trailer},
        {"another trailer", listed(plain).Sized().Bytes(apeTrailer), kAudio, kOld, apeTrailer},
        {"trailer inside", WavImage(plain).Bytes(trailer).Sized(), kAudio, {}, trailer},
        {"odd audio without a pad byte, list",
         Pcm().Header("data", 11).Bytes(odd + "LIST$\0\0\0"s).Bytes(old).Sized(),
         odd,
         {},
         "IST$\0\0\0"s + old},
        {"save that was interrupted",
         sound(listed(Pcm())).Header("\0\0\0\0"s, 900).Bytes("INFO" + lists).Sized()},
    };
}

struct Chunk {
    size_t offset;
    std::string id, content;
    bool operator==(const Chunk&) const = default;
    bool IsList() const { return id == "LIST" && content.starts_with("INFO"); }
};

inline uint32_t Number(const std::string& bytes, size_t place) {
    return LoadLE32(reinterpret_cast<const uint8_t*>(bytes.data()) + place);
}
// All chunks; nothing if they don't end where the file ends.
inline std::optional<std::vector<Chunk>> CleanWalk(const std::string& bytes) {
    std::vector<Chunk> chunks;
    size_t place = 12;
    while (place + 8 <= bytes.size()) {
        const size_t size = Number(bytes, place + 4);
        if (size > bytes.size() - place - 8) return std::nullopt;
        chunks.push_back({place, bytes.substr(place, 4), bytes.substr(place + 8, size)});
        place += 8 + size + (size & 1);
    }
    if (place != bytes.size()) return std::nullopt;
    return chunks;
}

inline std::string Bytes(const ScopedFile& file) {
    const std::vector<uint8_t> bytes = file.Bytes();
    return {bytes.begin(), bytes.end()};
}
inline void Save(const ScopedFile& file, const Tags& tags) {
    CWaveFile wave;
    ASSERT_EQ(wave.OpenForReading(file.Wide().c_str(), false), RESULT_OK);
    wave.Chunks() = tags;
    wave.SetModified(true);
    wave.CloseFile();
}

// What holds at any moment: the file opens, its audio is whole, its tags are `old` or `fresh`.
inline void ExpectSound(const ScopedFile& file, const Layout& layout, const Tags& fresh) {
    const std::string before = layout.image.Text();
    const std::string bytes = Bytes(file);
    const size_t place = before.rfind("data") + 8;
    EXPECT_EQ(bytes.substr(place, layout.audio.size()), layout.audio);
    EXPECT_NE(bytes.find(layout.tail), bytes.npos) << "the end that is no chunk";
    const bool riffWasRight = Number(before, 4) + size_t{8} <= before.size();
    EXPECT_TRUE(!riffWasRight || Number(bytes, 4) + size_t{8} <= bytes.size());
    CWaveFile wave;
    ASSERT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    const uint32_t declared = Number(before, before.find("data") + 4);
    EXPECT_TRUE(wave.DataSize() == declared || wave.DataSize() == layout.audio.size());
    EXPECT_TRUE(wave.Chunks() == layout.old || wave.Chunks() == fresh);
}

// What holds after a save that nothing disturbed.
inline void ExpectSaved(const ScopedFile& file, const Layout& layout, const Tags& fresh) {
    ExpectSound(file, layout, fresh);
    const std::string before = layout.image.Text();
    const std::string bytes = Bytes(file);
    const auto chunks = CleanWalk(bytes);
    ASSERT_TRUE(chunks);
    EXPECT_EQ(Number(bytes, 4), bytes.size() - 8);
    EXPECT_EQ(std::count_if(chunks->begin(), chunks->end(), [](const Chunk& c) { return c.IsList(); }),
              fresh.empty() ? 0 : 1);
    EXPECT_TRUE(fresh.empty() || chunks->back().content == ListOf(fresh));
    bool tailFound = layout.tail.empty();
    bool audioFound = false;
    for (const Chunk& chunk : *chunks) {
        audioFound |= chunk.id == "data" && chunk.content == layout.audio;
        tailFound |= chunk.id == "JUNK" && chunk.content == layout.tail;
        EXPECT_NE(chunk.id, std::string(4, '\0')) << "what was unfinished is dropped";
        // Whatever is no audio, list or filler stands where it stood.
        if (chunk.id == "data" || chunk.id == "JUNK" || chunk.IsList()) continue;
        EXPECT_EQ(before.substr(chunk.offset + 8, chunk.content.size()), chunk.content) << chunk.id;
    }
    EXPECT_TRUE(tailFound);
    EXPECT_TRUE(audioFound);
    for (const char* id : {"fact", "bext", "cue ", "smpl", "id3 ", "adtl", "iXML", "<x/>", "JUNK\3"})
        EXPECT_EQ(before.find(id), bytes.find(id)) << id;
}

}  // namespace save_test
