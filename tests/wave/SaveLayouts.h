// Files that a save has to cope with, and what must hold of any file at any moment of one.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "AudioCodec/wave/CWaveFile.h"
#include "AudioCodec/wave/WaveTypes.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace save_test {

using namespace std::string_literals;
using Tags = CWaveFile::ChunkMap;

inline const std::string kAudio = "\x81\xF0\3\4zyxw98"s;  // no chunk of its own
inline const Tags kOld{{FourCC("INAM"), "Old"}, {FourCC("ICRD"), "1999"}};

inline std::string Text(const WavImage& image) { return {image.Image().begin(), image.Image().end()}; }
inline std::string ListOf(const Tags& tags) {
    WavImage list(WavImage::Empty{});
    list.Bytes("INFO");
    for (const auto& [id, value] : tags)
        list.Chunk({reinterpret_cast<const char*>(&id), 4}, value);  // tests run where ids read so
    return Text(list);
}
inline WavImage WithRiffSize(const WavImage& image) {
    const std::string bytes = Text(image);
    return WavImage(WavImage::Empty{})
        .Header("RIFF", static_cast<uint32_t>(bytes.size()) - 8)
        .Bytes(bytes.substr(8));
}
inline WavImage Pcm() { return WavImage().Fmt(1, 1, 8000, 16); }

struct Layout {
    std::string name;
    WavImage image;
    std::string audio = kAudio;
    std::string tail = {};  // bytes at the end that are no chunk
    Tags old = kOld;
};

inline std::vector<Layout> Layouts() {
    const std::string old = ListOf(kOld);
    const auto sound = [](const WavImage& front) { return WavImage(front).Chunk("data", kAudio); };
    const auto row = [](std::string name, const WavImage& image, Tags tags = kOld) {
        return Layout{std::move(name), WithRiffSize(image), kAudio, "", std::move(tags)};
    };
    const WavImage plain = sound(Pcm());
    const std::string odd = kAudio + "\x7F";
    const std::string trailer = "TAGSome title" + std::string(115, 'x');
    const WavImage foreign = Pcm().Chunk("fact", "\5\0\0\0"s).Chunk("bext", std::string(602, 'b'));
    std::vector<Layout> layouts = {
        row("the writer's own", WavImage(plain).Chunk("LIST", old)),
        row("the writer's own, without a list", plain, {}),
        row("list in front", sound(Pcm().Chunk("LIST", old))),
        row("two lists", sound(Pcm().Chunk("LIST", ListOf({{FourCC("IART"), "x"}}))).Chunk("LIST", old)),
        row("two lists in front", sound(Pcm().Chunk("LIST", ListOf({})).Chunk("LIST", old))),
        row("list between", WavImage(plain).Chunk("LIST", old).Chunk("cue ", "\0\0\0\0"s)),
        row("foreign chunks around",
            sound(foreign).Chunk("LIST", "adtlnote").Chunk("smpl", "12345").Chunk("LIST", old)),
        row("foreign chunks behind", sound(foreign).Chunk("id3 ", "ID3\4"), {}),
        row("long record", sound(WavImage()
                                     .Header("fmt ", 40)
                                     .FormatRecord(0xFFFE, 1, 8000, 16)
                                     .Word16(22)
                                     .Bytes(std::string(22, 'g'))
                                     .Chunk("JUNK", "abc"))
                               .Chunk("LIST", old)),
        row("record of 18 bytes",
            sound(WavImage().Header("fmt ", 18).FormatRecord(1, 1, 8000, 16).Word16(0)).Chunk("LIST", old)),
    };
    const auto add = [&](std::string name, const WavImage& image, const std::string& audio,
                         const std::string& tail, const Tags& tags) {
        layouts.push_back({std::move(name), image, audio, tail, tags});
    };
    const WavImage listed = Pcm().Chunk("LIST", old);
    add("odd audio with a pad byte", WithRiffSize(Pcm().Chunk("data", odd).Chunk("LIST", old)), odd, "",
        kOld);
    add("odd audio without", WithRiffSize(WavImage(listed).Header("data", 11).Bytes(odd)), odd, "", kOld);
    add("endless audio", WavImage(listed).Header("data", 0xFFFFFFFF).Bytes(odd), odd, "", kOld);
    add("audio cut short", WithRiffSize(Pcm().Header("data", 500).Bytes(odd)), odd, "", {});
    add("audio of a recorder that crashed", WavImage(listed).Header("data", 0).Bytes(odd), odd, "", kOld);
    const std::string silence(24, '\0');
    add("silence of one", Pcm().Header("data", 0).Bytes(silence), silence, "", {});
    add("no audio, list", WithRiffSize(Pcm().Header("data", 0).Chunk("LIST", old)), "", "", kOld);
    add("chunk cut short", WithRiffSize(WavImage(plain).Header("iXML", 900).Bytes("<x/>")), kAudio, "", {});
    add("a few bytes", WithRiffSize(WavImage(plain).Chunk("LIST", old).Bytes("fmt \1")), kAudio, "fmt \1",
        kOld);
    for (const std::string& behind : {trailer, "APETAGEX"s + std::string(24, '\1')})
        add("trailer", WithRiffSize(WavImage(plain).Chunk("LIST", old)).Bytes(behind), kAudio, behind, kOld);
    add("trailer inside", WithRiffSize(WavImage(plain).Bytes(trailer)), kAudio, trailer, {});
    add("odd audio without a pad byte, list",
        WithRiffSize(Pcm().Header("data", 11).Bytes(odd + "LIST$\0\0\0"s).Bytes(old)), odd,
        "IST$\0\0\0"s + old, {});
    const WavImage unfinished =
        WithRiffSize(sound(listed)).Header("\0\0\0\0"s, 900).Bytes("INFOICRD" + std::string(700, 'u'));
    add("save that was interrupted", unfinished, kAudio, "", kOld);
    return layouts;
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
    const std::string before = Text(layout.image);
    const std::string bytes = Bytes(file);
    const size_t place = before.rfind("data") + 8;
    EXPECT_EQ(bytes.substr(place, layout.audio.size()), layout.audio);
    const bool riffWasRight = Number(before, 4) + size_t{8} <= before.size();
    EXPECT_TRUE(!riffWasRight || Number(bytes, 4) + size_t{8} <= bytes.size());
    CWaveFile wave;
    ASSERT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    const uint32_t declared = Number(before, before.find("data") + 4);
    EXPECT_TRUE(wave.DataSize() == declared || wave.DataSize() == layout.audio.size());
    EXPECT_TRUE(wave.Chunks() == layout.old || wave.Chunks() == fresh);
}

// What holds behind a save that nothing disturbed.
inline void ExpectSaved(const ScopedFile& file, const Layout& layout, const Tags& fresh) {
    ExpectSound(file, layout, fresh);
    const std::string before = Text(layout.image);
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
