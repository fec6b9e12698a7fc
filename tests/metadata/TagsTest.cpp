#include <gtest/gtest.h>

#include "AudioCodec/metadata/TagMapping.h"
#include "riff/ByteOrder.h"
#include "tests/metadata/MetadataHelpers.h"

namespace {

using namespace std::string_literals;
using Chunks = InfoChunks;

TagPairs Read(const Chunks& chunks) {
    TagList tags;
    ChunksToTags(tags, chunks);
    return PairsOf(tags);
}

Chunks Stored(const TagPairs& pairs, Chunks chunks = {}) {
    TagList tags = ListOf(pairs);
    TagsToChunks(tags, chunks);
    return chunks;
}

TEST(Tags, NamesAreLoweredAndBlanksTrimmed) {
    TagList tags = ListOf({{u"TiTle", u"  North Wind "}, {u"a", u"   "}, {u" B", u"x\t"}});
    EXPECT_EQ(PairsOf(tags), (TagPairs{{u"title", u"North Wind"}, {u"a", u""}, {u" b", u"x\t"}}));
}

TEST(Tags, ChunksComeInTheOrderOfTheirIds) {
    EXPECT_EQ(Read({{FourCC("INAM"), "Song\0junk"s},
                    {FourCC("IART"), "A"},
                    {FourCC("ICRD"), "1999-12-31\0"s},
                    {FourCC("IARL"), "7th"},
                    {FourCC("ISFT"), "x"},
                    {FourCC("ICMT"), ""},
                    {FourCC("IGNR"), "\x80"},
                    {FourCC("vltg"), "Mood=\xFE\xFF\0a\0\0\0"s}}),
              (TagPairs{{u"year", u"1999"},
                        {u"track", u"7"},
                        {u"title", u"Song"},
                        {u"genre", u"\u20AC"},
                        {u"comment", u""},
                        {u"artist", u"A"},
                        {u"mood", u"a"}}));
    for (const char* place : {"Shelf 12", ""}) EXPECT_EQ(Read({{FourCC("IARL"), place}}), TagPairs{});
}

TEST(Tags, TheTagChunkIsWrittenToTheByte) {
    const TagPairs pairs{{u"composer", u"Abc"}, {u"month", u"6"}};
    const Chunks expected{{FourCC("vltg"), "composer=\xFF\xFE\x41\0b\0c\0\0\0month=\xFF\xFE\x36\0\0\0\0"s}};
    EXPECT_EQ(Stored(pairs), expected);
    EXPECT_EQ(Read(expected), pairs);
}

TEST(Tags, ADamagedTagChunkGivesTheWholeEntriesInFront) {
    const TagPairs all{{u"a", u"1"}, {u"", u"x=y"}, {u"c", u""}};
    const size_t ends[] = {8, 19, 25};  // after which each is whole
    const Chunks stored = Stored(all);
    const std::string_view whole = stored.Find(FourCC("vltg")).value();
    for (size_t length = 0; length <= whole.size(); ++length) {
        // On the heap and no longer than it says, so that a read past it is seen.
        const std::vector<char> bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const Chunks chunks{{FourCC("vltg"), {bytes.data(), bytes.size()}}};
        TagPairs expected;
        for (size_t i = 0; i < 3; ++i)
            if (length >= ends[i]) expected.push_back(all[i]);
        EXPECT_EQ(Read(chunks), expected) << length;
    }
    EXPECT_EQ(Read({{FourCC("vltg"), "abc\0=\xFF\xFE\0\0"s}}), TagPairs{});
}

TEST(Tags, StandardTagsGetTheirChunks) {
    EXPECT_EQ(Stored({{u"title", u"Song"}, {u"year", u"2004"}, {u"track", u"7"}, {u"title", u"Later"}}),
              (Chunks{{FourCC("INAM"), "Later\0"s}, {FourCC("ICRD"), "2004\0"s}, {FourCC("IARL"), "7\0"s}}));
    EXPECT_EQ(Stored({}, {{FourCC("ISFT"), "me"}, {FourCC("INAM"), "x"}, {FourCC("vltg"), "y"}}),
              (Chunks{{FourCC("ISFT"), "me"}}));
}

TEST(Tags, ADateKeepsMonthAndDayAndAnArchivalLocationItsPlace) {
    const struct {
        uint32_t chunk;
        std::string old, stored;
    } rows[] = {
        {FourCC("ICRD"), "2004-05-06\0"s, "3-05-06\0\0"s},
        {FourCC("ICRD"), "2004\0"s, "3\0\0"s},
        {FourCC("ICRD"), "2004", "3\0"s},
        {FourCC("IARL"), "7\0"s, "3\0"s},
        {FourCC("IARL"), "12", "3\0"s},
        {FourCC("IARL"), "1x", "3\0"s},
        {FourCC("IARL"), "12\0"s, "12\0"s},
        {FourCC("IARL"), "Shelf 12", "Shelf 12"},
        {FourCC("IARL"), "3rd shelf", "3rd shelf"},
    };
    for (const auto& row : rows) {
        const TagPairs tags{{row.chunk == FourCC("ICRD") ? u"year" : u"track", u"3"}};
        EXPECT_EQ(Stored(tags, {{row.chunk, row.old}}), (Chunks{{row.chunk, row.stored}})) << row.old;
    }
}

}  // namespace
