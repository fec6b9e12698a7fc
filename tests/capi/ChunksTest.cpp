// Chunks of a source in the file that is made of it: what moves with the rate, what stays to the byte, what
// goes. Tags of ID3, the list of a file's chunks, and dither, which a conversion takes too.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <thread>

#include "capi/vlwav.hpp"
#include "capi/vlwav_more.h"
#include "riff/ByteOrder.h"
#include "tests/hostile/Bytes.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

using namespace Bytes;

namespace {

constexpr uint32_t kPlenty = 4000;  // frames of a source

std::string Point(uint32_t name, uint32_t position, uint32_t block = 0, uint32_t offset = UINT32_MAX) {
    return Little(name, 4) + Little(position, 4) + "data" + Little(block, 4) + Little(block, 4) +
           Little(offset == UINT32_MAX ? position : offset, 4);
}
std::string Cue(uint32_t count, const std::string& points) { return Little(count, 4) + points; }
std::string Sampler(uint32_t period, uint32_t loops, const std::string& rest) {
    return Little(7, 4) + Little(8, 4) + Little(period, 4) + Little(60, 4) + Little(0x80000000, 4) +
           Zeros(8) + Little(loops, 4) + Little(3, 4) + rest;
}
std::string Loop(uint32_t start, uint32_t end) {
    return Little(1, 4) + Zeros(4) + Little(start, 4) + Little(end, 4) + Little(0x40000000, 4) + Zeros(4);
}
std::string Broadcast(uint64_t time, const std::string& history) {
    return std::string(338, 'b') + Little(time, 8) + Little(2, 2) + std::string(254, 'z') + history;
}
std::string Sub(const std::string& id, const std::string& content) {
    return id + Little(content.size(), 4) + content + Zeros(content.size() & 1);
}
std::string Region(uint32_t frames) { return Little(1, 4) + Little(frames, 4) + "rgn " + Zeros(8) + "name"; }

// Each chunk after format, audio and tags, in order, and its content; "?" where the file isn't whole.
using Chunks = std::vector<std::pair<std::string, std::string>>;
Chunks ChunksOf(const std::string& file) {
    Chunks chunks;
    const auto size = [&](size_t at) {
        return size_t{LoadLE32(reinterpret_cast<const uint8_t*>(file.data()) + at)};
    };
    if (file.size() < 12 || size(4) + 8 != file.size()) return {{"?", "the file's size"}};
    for (size_t at = 12; at != file.size(); at += 8 + size(at + 4) + (size(at + 4) & 1)) {
        if (at + 8 > file.size() || at + 8 + size(at + 4) > file.size()) return {{"?", "a chunk's size"}};
        const std::string id = file.substr(at, 4);
        const std::string content = file.substr(at + 8, size(at + 4));
        if (id != "fmt " && id != "data" && content.substr(0, 4) != "INFO") chunks.emplace_back(id, content);
    }
    return chunks;
}

class ChunksTest : public testing::Test {
protected:
    struct Run {
        vlw_code code = VLW_OK;
        std::string notes;
        std::string bytes;
        Chunks Carried() const { return ChunksOf(bytes); }
    };
    struct Wish {
        uint32_t rate = 0, channels = 0, bits = 0, flags = 0, threads = 1;
        uint64_t seed = 0;
        int* told = nullptr;  // counts calls that tell how far the audio is
    };

    // Of `chunks` around some frames.
    std::string Source(uint32_t rate, const Chunks& chunks, uint32_t frames = kPlenty,
                       uint16_t bits = 16) const {
        WavImage image;
        image.Fmt(1, 1, rate, bits).Chunk("data", std::string(size_t{frames} * bits / 8, '\0'));
        for (const auto& [id, content] : chunks) image.Chunk(id, content);
        return image.Sized().Text();
    }
    Run Convert(const std::string& source, const Wish& wish, const char* name = "in.wav") const {
        const std::string in = m_folder.Path() / name, out = m_folder.Path() / "out.wav";
        std::ofstream(in, std::ios::binary) << source;
        return ConvertFile(in, out, wish);
    }
    static Run ConvertFile(const std::string& in, const std::string& out, const Wish& wish) {
        vlw::Converter converter;
        EXPECT_EQ(vlw_converter_seed(converter.get(), wish.seed), VLW_OK);
        vlw_conversion conversion = {};
        conversion.size = sizeof conversion;
        conversion.rate = wish.rate;
        conversion.channels = wish.channels;
        conversion.bits = wish.bits;
        conversion.flags = wish.flags | VLW_OVERWRITE;
        conversion.threads = wish.threads;
        conversion.user = wish.told;
        if (wish.told)
            conversion.progress = [](void* told, int64_t, int64_t) { return ++*static_cast<int*>(told), 0; };
        Run run;
        run.code = vlw_converter_run(converter.get(), in.c_str(), out.c_str(), &conversion);
        run.notes = run.code < VLW_OK ? vlw_converter_error(converter.get())->text
                                      : vlw_converter_notes(converter.get());
        run.bytes = FileContents(out);
        std::filesystem::remove(out);
        return run;
    }
    vlw::Tags TagsOf(const std::string& bytes, const char* name = "tags.wav") const {
        const std::string path = m_folder.Path() / name;
        std::ofstream(path, std::ios::binary) << bytes;
        vlw::Reader reader;
        reader.open(path);
        return reader.tags();
    }

    const TempFolder m_folder;
};

TEST_F(ChunksTest, TimesAndPlacesMoveToTheNewRateAndNothingElseDoes) {
    const std::string early = "A=PCM,F=48000,W=24,M=mono,T=deck\r\n";
    const std::string later = "A=PCM,F=44100,W=16,M=mono,T=vlwav\r\n";
    const uint64_t day = 48000ull * 86400;  // has more than 32 bits
    const struct {
        const char* id;
        std::string content, made;
    } rows[] = {
        {"bext", Broadcast(day + 80, early), Broadcast(44100ull * 86400 + 74, early + later)},
        {"bext", Broadcast(1, early.substr(0, 32) + Zeros(9)),
         Broadcast(1, early.substr(0, 32) + "\r\n" + later)},
        {"bext", Broadcast(UINT64_MAX - 1, ""), Broadcast(16947946117720650545ull, later)},
        // Ends within the fixed fields: as far as it goes.
        {"bext", Broadcast(160, "").substr(0, 601), Broadcast(147, "").substr(0, 601)},
        {"bext", Broadcast(160, "").substr(0, 345), Broadcast(160, "").substr(0, 345)},
        {"cue ", Cue(2, Point(1, 160) + Point(2, 80)), Cue(2, Point(1, 147) + Point(2, 74))},
        {"cue ", Cue(1, Point(1, 0xFFFFFFFF)), Cue(1, Point(1, 3946001202))},
        {"cue ", Cue(1, Point(1, 320, 77, 3)), Cue(1, Point(1, 294))},  // in a block of its own
        {"cue ", Cue(0xFFFFFFFF, Point(1, 160) + "tail"), Cue(0xFFFFFFFF, Point(1, 147) + "tail")},
        {"cue ", "abc", "abc"},
        {"plst", Cue(1, Little(1, 4) + Little(160, 4) + Little(2, 4) + "x"),
         Cue(1, Little(1, 4) + Little(147, 4) + Little(2, 4) + "x")},
        {"smpl", Sampler(20833, 1, Loop(160, 320) + "end"), Sampler(22676, 1, Loop(147, 294) + "end")},
        {"smpl", Sampler(20833, 9, Loop(160, 320) + "end"), Sampler(22676, 9, Loop(147, 294) + "end")},
        {"smpl", Sampler(20833, 0, "").substr(0, 35), Sampler(20833, 0, "").substr(0, 35)},
        {"LIST", "adtl" + Sub("labl", "\1\0\0\0odd") + Sub("ltxt", Region(160)) + Sub("ltxt", "1234567"),
         "adtl" + Sub("labl", "\1\0\0\0odd") + Sub("ltxt", Region(147)) + Sub("ltxt", "1234567")},
        {"LIST", "adtl" + Sub("ltxt", Region(320)).replace(4, 4, "\xFF\xFF\xFF\xFF"),
         "adtl" + Sub("ltxt", Region(294)).replace(4, 4, "\xFF\xFF\xFF\xFF")},
        {"LIST", "cue " + Point(1, 160), "cue " + Point(1, 160)},
        {"LIST", "ab", "ab"},
        {"inst", "1234567", "1234567"},
        {"iXML", "<x>160</x>", "<x>160</x>"},
        {"abcd", "", ""},
    };
    Chunks source, made;
    for (const auto& row : rows) {
        source.emplace_back(row.id, row.content);
        made.emplace_back(row.id, row.made);
    }
    const Run moved = Convert(Source(48000, source), {.rate = 44100});
    ASSERT_EQ(moved.code, VLW_OK) << moved.notes;
    const Chunks carried = moved.Carried();
    ASSERT_EQ(carried.size(), made.size());
    for (size_t i = 0; i < made.size(); ++i) EXPECT_EQ(carried[i], made[i]) << "row " << i;
    EXPECT_EQ(moved.notes, "48000 → 44100 Hz");
    // At its own rate nothing is touched, whatever is damaged; of coded audio a block's place goes.
    EXPECT_EQ(Convert(Source(48000, source), {}).Carried(), source);
    const Run wider = Convert(Source(48000, source, kPlenty, 24), {});
    EXPECT_EQ(wider.Carried()[7].second, Cue(1, Point(1, 320)));
    EXPECT_EQ(wider.Carried()[8].second, source[8].second);
    EXPECT_NE(wider.Carried()[0].second.find("F=48000,W=16,M=mono,T=vlwav\r\n"), std::string::npos);
    EXPECT_EQ(Convert(Source(48000, source), {.rate = 44100, .flags = VLW_NO_CHUNKS}).Carried(), Chunks());
}

// The file begins some frames later than the source where frames are put between.
TEST_F(ChunksTest, APointStaysAtItsSample) {
    for (const auto& [from, to] :
         {std::pair(8000u, 48000u), {22050u, 44100u}, {48000u, 8000u}, {44100u, 48000u}}) {
        Samples samples(kPlenty, 0);
        samples[2400] = 30000;
        WavImage image;
        image.Fmt(1, 1, from, 16).Data(samples).Chunk("cue ", Cue(1, Point(1, 2400)));
        image.Chunk("bext", Broadcast(from, ""));
        const Run run = Convert(image.Sized().Text(), {.rate = to});
        const Chunks carried = run.Carried();
        ASSERT_EQ(carried.size(), 2U);
        const auto* const bytes = reinterpret_cast<const uint8_t*>(run.bytes.data()) + 44;
        const uint32_t frames = (LoadLE32(bytes - 4)) / 2;
        uint32_t peak = 0;
        for (uint32_t i = 0; i < frames; ++i)
            if (std::abs(static_cast<int16_t>(LoadLE16(bytes + 2 * i))) >
                std::abs(static_cast<int16_t>(LoadLE16(bytes + 2 * peak))))
                peak = i;
        const auto place = LoadLE32(reinterpret_cast<const uint8_t*>(carried[0].second.data()) + 8);
        EXPECT_LE(std::abs(static_cast<int>(place) - static_cast<int>(peak)), 1) << from << " to " << to;
        const auto time = LoadLE32(reinterpret_cast<const uint8_t*>(carried[1].second.data()) + 338);
        EXPECT_EQ(static_cast<int>(time + place), static_cast<int>(to + std::lround(2400.0 * to / from)));
    }
    // The last frame stays the last; what lay beyond the end still does.
    const Run half = Convert(Source(44100, {{"smpl", Sampler(22676, 1, Loop(0, kPlenty - 1))},
                                            {"cue ", Cue(1, Point(1, 2 * kPlenty))}}),
                             {.rate = 22050});
    ASSERT_EQ(half.Carried().size(), 2U);
    EXPECT_EQ(half.Carried()[0].second, Sampler(45351, 1, Loop(0, kPlenty / 2 - 1)));
    EXPECT_EQ(half.Carried()[1].second, Cue(1, Point(1, kPlenty)));
}

TEST_F(ChunksTest, WhatTellsOfTheOldSamplesGoesAndWhatIsCutOffIsNamed) {
    std::string source = Source(48000, {{"fact", Zeros(4)},
                                        {"PEAK", Zeros(16)},
                                        {"JUNK", "x"},
                                        {"junk", "x"},
                                        {"PAD ", ""},
                                        {"FLLR", "xx"},
                                        {"levl", "x"},
                                        {"elm1", "x"},
                                        {"LIST", "wavl"},
                                        {"abcd", "odd"},
                                        {"\1bc\xFF", "x"}});
    const Run run = Convert(source + "cut " + Little(5, 4) + "1234", {});
    EXPECT_EQ(run.Carried(), (Chunks{{"abcd", "odd"}}));
    EXPECT_EQ(
        run.notes,
        "the output doesn't have \"?bc?\", \"cut \"\nthe output has no use for \"FLLR\", \"JUNK\", \"PAD "
        "\", \"PEAK\", \"elm1\", \"fact\", \"junk\", \"levl\", list \"wavl\"");
    // A last pad byte may be missing.
    source = Source(48000, {{"abcd", "odd"}});
    source.pop_back();
    EXPECT_EQ(Convert(source, {}).Carried(), (Chunks{{"abcd", "odd"}}));
    // What follows audio of no told length is audio.
    source = Source(48000, {{"abcd", "even"}});
    const Run untold = Convert(source.replace(40, 4, "\xFF\xFF\xFF\xFF"), {});
    EXPECT_EQ(untold.Carried(), Chunks());
    EXPECT_EQ(untold.bytes.size(), 44 + 2 * kPlenty + 12);
}

// What comes through a pipe isn't carried, and is named as far as it was met.
TEST_F(ChunksTest, WhatAPipeBringsIsNamed) {
    const std::string path = m_folder.Path() / "pipe", out = m_folder.Path() / "out.wav";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::string source = WavImage().Chunk("bext", Broadcast(0, "")).Chunk("JUNK", "x").Text();
    source += Source(48000, {}).substr(12);
    std::thread feeder([&] { std::ofstream(path, std::ios::binary) << source; });
    const Run run = ConvertFile(path, out, {});
    feeder.join();
    EXPECT_EQ(run.code, VLW_OK) << run.notes;
    EXPECT_EQ(run.notes, "the output doesn't have \"bext\"\nthe output has no use for \"JUNK\"");
    EXPECT_EQ(run.Carried(), Chunks());
}

TEST_F(ChunksTest, AFileThatWouldBeTooLargeIsRefusedBeforeAnythingIsCopied) {
    const std::string in = m_folder.Path() / "big.wav", out = m_folder.Path() / "made.wav";
    const std::string head = Source(48000, {}) + "abcd" + Little(0xFFFFF000, 4);
    std::ofstream(in, std::ios::binary) << head;
    std::filesystem::resize_file(in, head.size() + 0xFFFFF000);
    int told = 0;
    const Run run = ConvertFile(in, out, {.told = &told});
    EXPECT_EQ(run.code, VLW_TOO_LARGE) << run.notes;
    EXPECT_EQ(told, 0);
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(ConvertFile(in, out, {.flags = VLW_NO_CHUNKS}).code, VLW_OK);
}

// ---- AIFF, ID3 ----

std::string BigChunk(const std::string& id, const std::string& content) {
    return id + Big(content.size(), 4) + content + Zeros(content.size() & 1);
}
std::string Aiff(const std::string& more) {
    const std::string rate = "\x40\x0E\xBB\x80" + Zeros(6);  // 48000
    const std::string chunks = BigChunk("COMM", Big(1, 2) + Big(kPlenty, 4) + Big(16, 2) + rate) +
                               BigChunk("SSND", Zeros(8 + 2 * kPlenty)) + more;
    return "FORM" + Big(chunks.size() + 4, 4) + "AIFF" + chunks;
}
std::string Marker(uint32_t id, uint32_t position, const std::string& name) {
    return Big(id, 2) + Big(position, 4) + std::string(1, static_cast<char>(name.size())) + name +
           Zeros((name.size() + 1) & 1);
}

std::string Frame(const std::string& id, const std::string& content, uint32_t flags = 0) {
    return id + Big(content.size(), 4) + Big(flags, 2) + content;
}
std::string Text(const std::string& id, const std::string& text) { return Frame(id, '\0' + text); }
std::string Id3(const std::string& frames, char version = 3, char flags = 0) {
    std::string size = Big(0, 4);
    for (int i = 0; i < 4; ++i)
        size[static_cast<size_t>(i)] = static_cast<char>(frames.size() >> 7 * (3 - i) & 0x7F);
    return std::string("ID3") + version + '\0' + flags + size + frames;
}

TEST_F(ChunksTest, MarkersOfAiffBecomePointsWithTheirNames) {
    const std::string tag = Id3(Text("TIT2", "Named"));
    const std::string markers = Marker(3, 160, "In") + Marker(1, 320, "") + Marker(2, 480, "End");
    const std::string source =
        Aiff(BigChunk("MARK", Big(3, 2) + markers) + BigChunk("COMT", Zeros(2)) + BigChunk("ID3 ", tag));
    const Run run = Convert(source, {.rate = 44100}, "in.aiff");
    const Chunks made = {
        {"cue ", Cue(3, Point(3, 147) + Point(1, 294) + Point(2, 441))},
        {"LIST", "adtl" + Sub("labl", Little(3, 4) + "In" + '\0') + Sub("labl", Little(2, 4) + "End" + '\0')},
        {"id3 ", tag}};
    EXPECT_EQ(run.Carried(), made);
    EXPECT_EQ(run.notes, "48000 → 44100 Hz\nthe output doesn't have \"COMT\"");
    EXPECT_EQ(TagsOf(run.bytes).get("title"), "Named");
    // Of a count that lies those that are whole; none where there is none.
    EXPECT_EQ(
        Convert(Aiff(BigChunk("MARK", Big(9, 2) + markers.substr(0, markers.size() - 2))), {}).Carried(),
        (Chunks{{"cue ", Cue(2, Point(3, 160) + Point(1, 320))},
                {"LIST", "adtl" + Sub("labl", Little(3, 4) + "In" + '\0')}}));
    EXPECT_EQ(Convert(Aiff(BigChunk("MARK", Zeros(2))), {}).Carried(), Chunks());
}

TEST_F(ChunksTest, Id3FillsWhatTheListDoesNotHave) {
    const std::string png = "\x89PNG\r\n\x1A\nbytes";
    const auto picture = [&](char type, const std::string& bytes) {
        return Frame("APIC", '\0' + std::string("image/png") + '\0' + type + '\0' + bytes);
    };
    const std::string tag = Id3(
        Text("TIT2", "Other") + Text("TPE1", "Singer") + Text("TRCK", "7/12") + Text("TYER", "1999") +
        Text("TDAT", "0504") + Text("TCON", "(17)") + Text("TPE3", "Leader") +
        Frame("TCOM", std::string("\1\xFF\xFE\xE9\x65", 5)) + picture(3, png) + picture(3, "not one") +
        picture(4, "http://x") +
        Frame("TALB",
              std::string("\000\000\000\007\170\234\143\050\110\114\316\116\115\001\000\010\207\002\151", 19),
              0x80));
    const std::string source =
        Source(48000, {{"id3 ", tag}, {"LIST", "INFO" + Sub("INAM", std::string("Title\0", 6))}});
    const auto expect = [&](const std::string& bytes, bool inList) {
        const vlw::Tags tags = TagsOf(bytes);
        EXPECT_EQ(tags.get("title"), inList ? "Title" : "Other");
        EXPECT_EQ(tags.get("artist"), "Singer");
        EXPECT_EQ(tags.get("track"), "7");
        EXPECT_EQ(tags.get("year"), "1999");
        EXPECT_EQ(tags.get("month"), "4");
        EXPECT_EQ(tags.get("day"), "5");
        EXPECT_EQ(tags.get("genre"), "Rock");
        EXPECT_EQ(tags.get("composer"), "\xE6\x97\xA9");
        EXPECT_EQ(tags.get("conductor"), "Leader");
        EXPECT_FALSE(tags.get("album"));  // packed
        ASSERT_EQ(vlw_tags_picture_count(tags.get()), 1U);
        const void* found = nullptr;
        size_t size = 0;
        EXPECT_EQ(vlw_tags_best_picture(tags.get(), nullptr, &found, &size), VLW_OK);
        EXPECT_EQ(std::string(static_cast<const char*>(found), size), png);
    };
    expect(source, true);
    // Nothing of it is lost: the chunk goes along, and what a list can keep is in the list as well.
    const Run run = Convert(source, {});
    ASSERT_EQ(run.code, VLW_OK) << run.notes;
    EXPECT_EQ(run.Carried(), (Chunks{{"id3 ", tag}}));
    EXPECT_NE(run.bytes.find("IART"), std::string::npos);
    expect(run.bytes, true);
    EXPECT_EQ(Convert(source, {.flags = VLW_NO_TAGS}).Carried(), Chunks());
    EXPECT_EQ(Convert(source, {.flags = VLW_NO_CHUNKS}).code, VLW_WOULD_LOSE);
    // Zeros after each FF, an extended head, plain sizes in version 4, and what is no tag.
    const std::string stuffed = Text("TIT2", "\xFF\xFF") + Text("TALB", "x");
    std::string out;
    for (const char c : stuffed) out += c == '\xFF' ? std::string("\xFF\0", 2) : std::string(1, c);
    EXPECT_EQ(TagsOf(Source(48000, {{"ID3 ", Id3(out, 3, '\x80')}})).get("album"), "x");
    EXPECT_EQ(TagsOf(Source(48000, {{"id3 ", Id3(Big(6, 4) + Zeros(6) + Text("TALB", "x"), 3, '\x40')}}))
                  .get("album"),
              "x");
    const std::string longer = Text("TIT2", std::string(300, 'a')) + Text("TALB", "x");
    EXPECT_EQ(TagsOf(Source(48000, {{"id3 ", Id3(longer, 4)}})).get("album"), "x");
    EXPECT_EQ(TagsOf(Source(48000, {{"id3 ", Id3(longer, 4)}})).get("title"), std::string(300, 'a'));
    for (const std::string& none :
         {std::string("ID3"), "XD3" + tag.substr(3), Id3(tag, 5), Id3("TIT2" + Big(0xFFFFFFFF, 4))})
        EXPECT_EQ(vlw_tags_count(TagsOf(Source(48000, {{"id3 ", none}})).get()), 0U);
    // An editor knows the list alone.
    vlw::Editor editor;
    editor.open(m_folder.Path() / "in.wav");
    EXPECT_FALSE(editor.tags().get("artist"));
}

// ---- the list of chunks ----

TEST_F(ChunksTest, TheChunksOfAFileAreToldInItsOrder) {
    std::string bytes = Source(48000, {{"LIST", "adtlxx"}, {"abcd", "odd"}}) + "last" + Little(99, 4);
    vlw::Reader reader;
    vlw_chunk chunk = {};
    chunk.size = sizeof chunk;
    EXPECT_EQ(vlw_reader_chunk_count(reader.get()), 0U);
    EXPECT_EQ(vlw_reader_chunk(reader.get(), 0, &chunk), VLW_BAD_STATE);
    const auto told = [&](size_t index) -> std::string {
        if (vlw_reader_chunk(reader.get(), index, &chunk) != VLW_OK) return "none";
        const std::string type = chunk.type[0] ? std::string(chunk.type, 4) : "";
        return std::string(chunk.id, 4) + type + " " + std::to_string(chunk.offset) + " " +
               std::to_string(chunk.bytes);
    };
    reader.open_memory(bytes.data(), bytes.size());
    EXPECT_EQ(vlw_reader_chunk_count(reader.get()), 5U);
    const std::vector<std::string> all = {"fmt  12 16", "data 36 8000", "LISTadtl 8044 6", "abcd 8058 3",
                                          "last 8070 99"};
    for (const size_t index : {0U, 1U, 2U, 3U, 4U, 2U, 0U, 4U}) EXPECT_EQ(told(index), all[index]);
    EXPECT_EQ(told(5), "none");
    EXPECT_EQ(told(4), all[4]);
    chunk.size = 8;
    EXPECT_EQ(vlw_reader_chunk(reader.get(), 0, &chunk), VLW_BAD_ARGUMENT);
    chunk.size = sizeof chunk;
    bytes.replace(40, 4, "\xFF\xFF\xFF\xFF");
    reader.open_memory(bytes.data(), bytes.size());
    EXPECT_EQ(vlw_reader_chunk_count(reader.get()), 2U);
    const std::string aiff = Aiff(BigChunk("MARK", Zeros(2)));
    reader.open_memory(aiff.data(), aiff.size());
    EXPECT_EQ(told(2), "MARK " + std::to_string(12 + 26 + 8 + 8 + 2 * kPlenty) + " 2");
    EXPECT_EQ(told(1).substr(0, 7), "SSND 38");
}

// ---- dither ----

TEST_F(ChunksTest, DitherTurnsTheErrorOfEightBitsIntoNoiseOfNoMean) {
    constexpr uint32_t kFrames = 100'000;
    constexpr double kStep = 256;  // of 8 bits, in steps of 16
    const auto source = [&](int16_t level) {
        return WavImage().Fmt(1, 2, 44100, 16).Data(Samples(2 * kFrames, level)).Sized().Text();
    };
    const auto audio = [](const Run& run) { return run.bytes.substr(44); };
    for (const int16_t level : {int16_t{0}, int16_t{40}, int16_t{-200}, int16_t{1000}}) {
        const Run run = Convert(source(level), {.bits = 8, .flags = VLW_DITHER, .seed = 1});
        double sum = 0, squares = 0;
        for (const char byte : audio(run)) {
            const double error = (static_cast<uint8_t>(byte) - 128) * kStep - level;
            sum += error;
            squares += error * error;
        }
        const double count = 2.0 * kFrames;
        // A triangle of two steps and the rounding: 3 / 12 of a step squared, whatever the level is.
        EXPECT_NEAR(sum / count, 0, 4 * kStep / 2 / std::sqrt(count)) << level;
        EXPECT_NEAR(squares / count, kStep * kStep / 4, kStep * kStep / 100) << level;
    }
    const Run first = Convert(source(40), {.bits = 8, .flags = VLW_DITHER});
    EXPECT_EQ(Convert(source(40), {.bits = 8, .flags = VLW_DITHER}).bytes, first.bytes);
    EXPECT_NE(Convert(source(40), {.bits = 8, .flags = VLW_DITHER, .seed = 1}).bytes, first.bytes);
    EXPECT_EQ(audio(Convert(source(40), {.bits = 8})), std::string(2 * kFrames, '\x80'));
    // At the ends of the range nothing turns over.
    for (const int16_t level : {int16_t{-32768}, int16_t{32767}})
        for (const char byte : audio(Convert(source(level), {.bits = 8, .flags = VLW_DITHER})))
            ASSERT_LE(std::abs((static_cast<uint8_t>(byte) - 128) * 256 - level), 512);
    // After the conversion of the rate, by any number of threads; and of the same frames as without.
    const Wish rate = {.rate = 48000, .channels = 1, .bits = 8, .flags = VLW_DITHER};
    Wish threads = rate, plain = rate;
    threads.threads = 3;
    plain.flags = 0;
    const std::string noise = WavImage().Fmt(1, 2, 44100, 16).Data(Noise(2 * kFrames)).Sized().Text();
    const Run one = Convert(noise, rate);
    const Run without = Convert(noise, plain);
    EXPECT_EQ(Convert(noise, threads).bytes, one.bytes);
    ASSERT_EQ(without.bytes.size(), one.bytes.size());
    for (size_t i = 44; i < one.bytes.size(); ++i)
        ASSERT_LE(std::abs(static_cast<uint8_t>(one.bytes[i]) - static_cast<uint8_t>(without.bytes[i])), 2);
    // What has 8 bits already is copied.
    const Run eight = Convert(Source(48000, {}, kPlenty, 8), {.bits = 8, .flags = VLW_DITHER});
    EXPECT_EQ(audio(eight), std::string(kPlenty, '\0'));
}

}  // namespace
