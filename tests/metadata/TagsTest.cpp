#include <gtest/gtest.h>

#include "AudioCodec/metadata/TagChunk.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "platform/base/LittleEndian.h"

namespace {

using namespace std::string_literals;
using Chunks = CWaveFile::ChunkMap;
using Pairs = std::vector<std::pair<std::u16string, std::u16string>>;

Pairs Plain(TagList& tags) {
    Pairs pairs;
    for (TagEntry& tag : tags) pairs.emplace_back(tag.name.Wide(), tag.value.Wide());
    return pairs;
}

TagList List(const Pairs& pairs) {
    TagList tags;
    for (const auto& [name, value] : pairs) {
        CStr nameText(name.data(), static_cast<uint32_t>(name.size()));
        CStr valueText(value.data(), static_cast<uint32_t>(value.size()));
        AddTag(tags, nameText, valueText);
    }
    return tags;
}

Pairs Read(const Chunks& chunks) {
    TagList tags;
    ChunksToTags(tags, chunks);
    return Plain(tags);
}

Chunks Stored(const Pairs& pairs, Chunks chunks = {}) {
    TagList tags = List(pairs);
    TagsToChunks(tags, chunks);
    return chunks;
}

TEST(Tags, NamesAreLoweredAndBlanksTrimmed) {
    TagList tags = List({{u"TiTle", u"  North Wind "}, {u"a", u"   "}, {u" B", u"x\t"}});
    EXPECT_EQ(Plain(tags), (Pairs{{u"title", u"North Wind"}, {u"a", u""}, {u" b", u"x\t"}}));
}

TEST(Tags, ChunksComeInTheOrderOfTheirIds) {
    const Chunks chunks{{FourCC("INAM"), "Song\0junk"s},
                        {FourCC("IART"), "A"},
                        {FourCC("ICRD"), "1999-12-31\0"s},
                        {FourCC("IARL"), "7th"},
                        {FourCC("ISFT"), "x"},
                        {FourCC("ICMT"), ""},
                        {FourCC("IGNR"), "\x80"},
                        {FourCC("vltg"), "Mood=\xFE\xFF\0a\0\0\0"s}};
    EXPECT_EQ(Read(chunks), (Pairs{{u"year", u"1999"},
                                   {u"track", u"7"},
                                   {u"title", u"Song"},
                                   {u"genre", u"\u20AC"},
                                   {u"comment", u""},
                                   {u"artist", u"A"},
                                   {u"mood", u"a"}}));
    EXPECT_EQ(Read({{FourCC("IARL"), "Shelf 12"}}), Pairs{});
    EXPECT_EQ(Read({{FourCC("IARL"), ""}}), Pairs{});
}

TEST(Tags, TheTagChunkIsWrittenToTheByte) {
    const std::string expected =
        "composer=\xFF\xFE"
        "A\0b\0c\0\0\0month=\xFF\xFE"
        "6\0\0\0\0"s;
    ASSERT_EQ(expected.size(), 32u);
    EXPECT_EQ(Stored({{u"composer", u"Abc"}, {u"month", u"6"}}), (Chunks{{FourCC("vltg"), expected}}));
    EXPECT_EQ(Read({{FourCC("vltg"), expected}}), (Pairs{{u"composer", u"Abc"}, {u"month", u"6"}}));
}

TEST(Tags, ADamagedTagChunkGivesTheWholeEntriesInFront) {
    const std::string whole = Stored({{u"a", u"1"}, {u"", u"x=y"}, {u"c", u""}}).at(FourCC("vltg"));
    const Pairs all{{u"a", u"1"}, {u"", u"x=y"}, {u"c", u""}};
    for (size_t length = 0; length <= whole.size(); ++length) {
        TagList tags;
        // On the heap and no longer than it says, so that a read behind it is seen.
        const std::vector<char> bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        ParseTagChunk(tags, {bytes.data(), bytes.size()});
        const Pairs found = Plain(tags);
        ASSERT_LE(found.size(), all.size());
        EXPECT_TRUE(std::equal(found.begin(), found.end(), all.begin())) << length;
        if (length + 1 >= whole.size()) {
            EXPECT_EQ(found, all);
        }
    }
    TagList tags;
    ParseTagChunk(tags, "abc\0=\xFF\xFE\0\0"s);
    EXPECT_TRUE(tags.empty());
}

TEST(Tags, StandardTagsGetTheirChunks) {
    EXPECT_EQ(Stored({{u"title", u"Song"}, {u"year", u"2004"}, {u"track", u"7"}, {u"title", u"Later"}}),
              (Chunks{{FourCC("INAM"), "Later\0"s}, {FourCC("ICRD"), "2004\0"s}, {FourCC("IARL"), "7\0"s}}));
    const Chunks foreign{{FourCC("ISFT"), "me"}};
    EXPECT_EQ(Stored({}, {{FourCC("ISFT"), "me"}, {FourCC("INAM"), "x"}, {FourCC("vltg"), "y"}}), foreign);
}

TEST(Tags, ADateKeepsMonthAndDay) {
    const auto date = [](const std::string& old) {
        return Stored({{u"year", u"2010"}}, {{FourCC("ICRD"), old}}).at(FourCC("ICRD"));
    };
    EXPECT_EQ(date("2004-05-06\0"s), "2010-05-06\0\0"s);
    EXPECT_EQ(date("2004\0"s), "2010\0\0"s);
    EXPECT_EQ(date("2004"), "2010\0"s);
}

TEST(Tags, AnArchivalLocationKeepsItsPlace) {
    struct Case {
        std::string old, expected;
    };
    for (const Case& c : {Case{"7\0"s, "3\0"s},
                          {"12", "3\0"s},
                          {"1x", "3\0"s},
                          {"12\0"s, "12\0"s},
                          {"Shelf 12", "Shelf 12"},
                          {"3rd shelf", "3rd shelf"}})
        EXPECT_EQ(Stored({{u"track", u"3"}}, {{FourCC("IARL"), c.old}}).at(FourCC("IARL")), c.expected)
            << c.old;
}

}  // namespace
