// The metadata object, the transfer between tags and attributes, and the editor over real files.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/CACMetadataEditor.h"
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "AudioCodec/shell/object/CStr.h"
#include "riff/ByteOrder.h"
#include "tests/metadata/MetadataHelpers.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

using namespace std::string_literals;
using Bytes = std::vector<uint8_t>;

TEST(Metadata, CopyTakesTheListedAttributesAndLeavesWhatTheSourceLacks) {
    const RefPtr<IAC3Metadata> source = NewMetadata();
    source->SetLong(ATTR_TITLE, 1);  // of another type: passed over
    source->SetString(ATTR_METADATA_EXTRA, u"extra");
    source->SetLong(ATTR_METADATA_LONG_2, 77);
    source->SetLong(ATTR_TEXT_LANGUAGE, 1041);  // not in the list
    const RefPtr<IAC3Metadata> target = NewMetadata();
    target->SetString(ATTR_TITLE, u"Mine");
    target->SetString(ATTR_ALBUM, u"Mine too");
    EXPECT_EQ(target->CopyFrom(source.Get()), RESULT_OK);
    EXPECT_EQ(Text(*target, ATTR_TITLE), u"Mine");
    EXPECT_EQ(Text(*target, ATTR_ALBUM), u"Mine too");
    EXPECT_EQ(Text(*target, ATTR_METADATA_EXTRA), u"extra");
    EXPECT_EQ(target->GetLong(ATTR_METADATA_LONG_2), 77U);
    EXPECT_EQ(target->GetAttributeCount(), 3U + 10U);  // every number of the list is there now
    EXPECT_EQ(target->CopyFrom(nullptr), RESULT_OK);
}

TEST(Metadata, MergeCopiesPicturesAndTakesOverTheFlags) {
    const auto put = [](PictureSet& set, int32_t key, uint8_t byte) {
        EXPECT_EQ(set.StorePicture(&byte, 1, u"image/jpeg", u"", key), RESULT_OK);
    };
    PictureSet source;
    put(source, 3, 30);
    put(source, -5, 50);
    source.m_records[-5]->id = 9;  // the key counts, not the record's id
    source.m_changed = true;
    const RefPtr<IAC3Metadata> metadata = NewMetadata();
    PictureSet& set = SetOf(*metadata);
    put(set, 3, 1);
    put(set, 4, 40);
    set.m_cleared = true;
    EXPECT_EQ(metadata->MergePictures(nullptr), RESULT_BAD_ARGUMENT);
    for (int turn = 0; turn < 2; ++turn) EXPECT_EQ(metadata->MergePictures(&source), RESULT_OK);
    source.m_records.clear();
    ASSERT_EQ(set.m_records.size(), 3U);
    EXPECT_EQ(set.m_records[3]->data[0], 30);
    EXPECT_EQ(set.m_records[-5]->id, 9);
    EXPECT_EQ(set.m_records[-5]->extension, u"jpg");
    EXPECT_EQ(set.m_records[4]->data[0], 40);
    EXPECT_TRUE(set.m_changed && !set.m_cleared);

    const RefPtr<IAC3Metadata> copy = NewMetadata();
    const auto merge = [&] { return copy->MergePictures(&set); };
    const auto check = [&] {
        for (const auto& [id, picture] : SetOf(*copy).m_records) ASSERT_TRUE(picture) << id;
    };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, merge, check), RESULT_OK);
    EXPECT_EQ(SetOf(*copy).m_records.size(), 3U);
}

TEST(Metadata, TagsBecomeAttributesAndTheLastOneWins) {
    TagList tags = ListOf({{u"track", u"07th"},
                           {u"year", u" \t-1"},
                           {u"month", u"abcd"},
                           {u"day", u"99999999999"},
                           {u"artist", u"A"},
                           {u"performer", u"B"},
                           {u"bpm", u"120.5"},
                           {u"disc", u""},
                           {u"conductor", u"C"}});
    const RefPtr<IAC3Metadata> metadata = NewMetadata();
    TagsToMetadata(tags, *metadata);
    EXPECT_EQ(metadata->GetLong(ATTR_MONTH), 0U);
    EXPECT_EQ(Text(*metadata, ATTR_DISC), u"");
    EXPECT_EQ(metadata->GetAttributeCount(), 7U);

    metadata->SetString(ATTR_TITLE, u"  ");
    metadata->SetLong(ATTR_WRITER, 5);  // of another type: no tag
    MetadataToTags(tags, *metadata, ZeroNumbers::Drop);
    EXPECT_EQ(PairsOf(tags), (TagPairs{{u"title", u""},
                                       {u"artist", u"B"},
                                       {u"bpm", u"120.5"},
                                       {u"year", u"-1"},
                                       {u"day", u"2147483647"},
                                       {u"track", u"7"}}));
    MetadataToTags(tags, *NewMetadata(), ZeroNumbers::Keep);
    EXPECT_EQ(PairsOf(tags), (TagPairs{{u"year", u"0"}, {u"day", u"0"}, {u"month", u"0"}, {u"track", u"0"}}));
}

const std::string kInfo =
    "INAM\5\0\0\0Song\0\0ISFT\2\0\0\0x\0vltg\x16\0\0\0conductor=\xFF\xFE"s
    "Z\0\0\0=\xFF\xFE\0\0\0"s;

Bytes Recording(const std::string& info = "", uint16_t bits = 16) {
    WavImage image;
    image.Fmt(1, 1, 8000, bits).Data({1, 2, 3});
    if (!info.empty()) image.Chunk("LIST", "INFO" + info);
    return image.Sized().Image();
}

RefPtr<CACMetadataEditor> Editor(const ScopedFile& file) {
    return RefPtr<CACMetadataEditor>::Retain(new CACMetadataEditor(file.Wide().c_str()));
}

TEST(MetadataEditor, OpensWhatItCanSaveAndNothingElse) {
    const std::pair<Bytes, Result> rows[] = {
        {Recording(), RESULT_OK},
        {Recording("", 24), RESULT_NOT_PCM},
        {WavImage().Fmt(3, 1, 8000, 16).Data({}).Image(), RESULT_NOT_PCM},
        {WavImage().Data({1}).Image(), RESULT_NOT_WAVE},
    };
    for (const auto& [image, result] : rows) {
        const ScopedFile file(image);
        const RefPtr<CACMetadataEditor> editor = Editor(file);
        EXPECT_EQ(editor->Open(), result);
        if (result != RESULT_OK) {  // nothing is left open, and nothing is written
            EXPECT_EQ(editor->SetMetadata(NewMetadata().Get()), RESULT_OK);
            EXPECT_EQ(editor->Save(), RESULT_OK);
        }
        EXPECT_EQ(Editor(file)->Open(), result == RESULT_OK ? RESULT_FILE_IN_USE : result);
        EXPECT_EQ(editor->Close(), RESULT_OK);
        EXPECT_EQ(file.Bytes(), image);
    }
    EXPECT_EQ(Editor(ScopedFile())->Open(), RESULT_CANNOT_OPEN);
}

TEST(MetadataEditor, SavesByTheThreeRoads) {
    const Bytes before = Recording(kInfo);
    const ScopedFile file(before);
    const RefPtr<CACMetadataEditor> editor = Editor(file);
    // Neither asked nor told: nothing changes.
    ASSERT_EQ(editor->Open(), RESULT_OK);
    EXPECT_EQ(editor->Save(), RESULT_OK);
    EXPECT_EQ(file.Bytes(), before);

    // Asked alone, even twice: unknown tags survive.
    ASSERT_EQ(editor->Open(), RESULT_OK);
    RefPtr<IAC3Metadata> metadata;
    for (int turn = 0; turn < 2; ++turn) ASSERT_EQ(editor->GetMetadata(metadata.Put()), RESULT_OK);
    EXPECT_EQ(Text(*metadata, ATTR_TITLE), u"Song");
    EXPECT_EQ(metadata->GetAttributeCount(), 1U);
    EXPECT_EQ(editor->Save(), RESULT_OK);
    EXPECT_EQ(file.Bytes(), before);

    // Told, several times over: the tags are what was told.
    ASSERT_EQ(editor->Open(), RESULT_OK);
    EXPECT_EQ(editor->SetMetadata(nullptr), RESULT_BAD_ARGUMENT);
    metadata->SetString(ATTR_COMPOSER, u"\u6B66\u6E80");
    EXPECT_EQ(editor->SetMetadata(metadata.Get()), RESULT_OK);
    const RefPtr<IAC3Metadata> more = NewMetadata();
    more->SetString(ATTR_TITLE, u"\u20ACuro");
    more->SetLong(ATTR_YEAR, 1999);
    EXPECT_EQ(editor->SetMetadata(more.Get()), RESULT_OK);
    EXPECT_EQ(editor->Save(), RESULT_OK);

    ASSERT_EQ(editor->Open(), RESULT_OK);
    ASSERT_EQ(editor->GetMetadata(metadata.Put()), RESULT_OK);
    EXPECT_EQ(Text(*metadata, ATTR_TITLE), u"\u20ACuro");
    EXPECT_EQ(Text(*metadata, ATTR_COMPOSER), u"\u6B66\u6E80");
    EXPECT_EQ(metadata->GetLong(ATTR_YEAR), 1999U);
    EXPECT_EQ(metadata->GetAttributeCount(), 3U + 3U);  // and the numbers that were none, as 0
}

TEST(MetadataEditor, AnswersFromTheLastOpenWhenClosed) {
    const ScopedFile file(Recording(kInfo));
    const RefPtr<CACMetadataEditor> editor = Editor(file);
    AudioFormatInfo format{};
    EXPECT_EQ(editor->GetSourceFormat(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(editor->GetMetadata(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(editor->Open(), RESULT_OK);
    for (int turn = 0; turn < 2; ++turn) EXPECT_EQ(editor->Close(), RESULT_OK);
    EXPECT_EQ(editor->GetSourceFormat(&format), RESULT_OK);
    EXPECT_EQ(format.samplesPerSec, 8000U);
    RefPtr<IAC3Metadata> metadata;
    const auto get = [&] { return editor->GetMetadata(metadata.Put()); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, get, [&] { EXPECT_FALSE(metadata); }), RESULT_OK);
    EXPECT_EQ(get(), RESULT_OK);
    EXPECT_EQ(Text(*metadata, ATTR_TITLE), u"Song");
}

TagPairs Read(const InfoChunks& chunks) {
    TagList tags;
    ChunksToTags(tags, chunks);
    return PairsOf(tags);
}

InfoChunks Stored(const TagPairs& pairs, InfoChunks chunks = {}) {
    TagList tags = ListOf(pairs);
    TagsToChunks(tags, chunks);
    return chunks;
}

TEST(Tags, NamesAreLoweredAndBlanksTrimmed) {
    TagList tags = ListOf({{u"TiTle", u"  North Wind "}, {u"a", u"   "}, {u" B", u"x\t"}});
    EXPECT_EQ(PairsOf(tags), (TagPairs{{u"title", u"North Wind"}, {u"a", u""}, {u" b", u"x\t"}}));
}

// In Turkish the small letter of "I" has no dot, and is none of the code page.
TEST(Tags, NamesAreLoweredTheSameInEveryLocale) {
    const auto check = [] {
        EXPECT_EQ(LoweredTagName("TITLE \xC0\xC9\xD7\xDE\xDF\xE9\x8A\x8C\x8E\x9F@[\x80"),
                  "title \xE0\xE9\xD7\xFE\xDF\xE9\x9A\x9C\x9E\xFF@[\x80");
    };
    check();
    const TempFolder locales;
    const std::string compile = "localedef -c -i tr_TR -f ISO-8859-9 " + locales.Native("tr_TR");
    if (std::system((compile + " 2> /dev/null").c_str()) != 0) GTEST_SKIP() << "no localedef, or no locales";
    setenv("LOCPATH", locales.Path().c_str(), 1);
    EXPECT_TRUE(std::setlocale(LC_ALL, "tr_TR"));
    check();
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
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
    const InfoChunks expected{
        {FourCC("vltg"), "composer=\xFF\xFE\x41\0b\0c\0\0\0month=\xFF\xFE\x36\0\0\0\0"s}};
    EXPECT_EQ(Stored(pairs), expected);
    EXPECT_EQ(Read(expected), pairs);
}

TEST(Tags, ADamagedTagChunkGivesTheWholeEntriesInFront) {
    const TagPairs all{{u"a", u"1"}, {u"", u"x=y"}, {u"c", u""}};
    const size_t ends[] = {8, 19, 25};  // after which each is whole
    const InfoChunks stored = Stored(all);
    const std::string_view whole = stored.Find(FourCC("vltg")).value();
    for (size_t length = 0; length <= whole.size(); ++length) {
        // On the heap and no longer than it says, so that a read past it is seen.
        const std::vector<char> bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const InfoChunks chunks{{FourCC("vltg"), {bytes.data(), bytes.size()}}};
        TagPairs expected;
        for (size_t i = 0; i < 3; ++i)
            if (length >= ends[i]) expected.push_back(all[i]);
        EXPECT_EQ(Read(chunks), expected) << length;
    }
    EXPECT_EQ(Read({{FourCC("vltg"), "abc\0=\xFF\xFE\0\0"s}}), TagPairs{});
}

TEST(Tags, StandardTagsGetTheirChunks) {
    EXPECT_EQ(
        Stored({{u"title", u"Song"}, {u"year", u"2004"}, {u"track", u"7"}, {u"title", u"Later"}}),
        (InfoChunks{{FourCC("INAM"), "Later\0"s}, {FourCC("ICRD"), "2004\0"s}, {FourCC("IARL"), "7\0"s}}));
    EXPECT_EQ(Stored({}, {{FourCC("ISFT"), "me"}, {FourCC("INAM"), "x"}, {FourCC("vltg"), "y"}}),
              (InfoChunks{{FourCC("ISFT"), "me"}}));
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
        EXPECT_EQ(Stored(tags, {{row.chunk, row.old}}), (InfoChunks{{row.chunk, row.stored}})) << row.old;
    }
}

using Mode = CStr::CopyMode;

TEST(CStr, ConvertsEachWayOnceAndKeepsWhatItHad) {
    static constexpr char16_t kLiteral[] = u"\u20AC \u00E9 \u30E2";
    CStr text(kLiteral);
    EXPECT_EQ(text.Wide(), kLiteral);  // wrapped, not copied
    const char* const narrow = text.Narrow();
    EXPECT_STREQ(narrow, "\x80 \xE9 ?");
    EXPECT_EQ(text.Narrow(), narrow);
    EXPECT_EQ(text.WideLength(), 5u);
    EXPECT_EQ(std::u16string(CStr("\x80\x99", 2).Wide()), u"\u20AC\u2122");
    CStr none;
    EXPECT_TRUE(!none.Wide() && !none.Narrow() && none.WideLength() == 0);
}

TEST(CStr, CopiesShareOrTakeOverByMode) {
    CStr source(u"both", 4);
    source.Narrow();
    const char16_t* const wide = source.Wide();
    CStr deep(source, Mode::Deep);
    EXPECT_NE(deep.Wide(), wide);
    EXPECT_STREQ(deep.Narrow(), "both");
    EXPECT_EQ(CStr(source, Mode::Alias).Wide(), wide);
    CStr taken(source, Mode::DeepOrTake);
    EXPECT_EQ(taken.Wide(), wide);
    EXPECT_EQ(source.Wide(), wide);  // still borrowed from the new owner
    CStr literal(u"literal");
    EXPECT_NE(CStr(literal, Mode::DeepOrTake).Wide(), literal.Wide());
    CStr moved;
    {
        CStr narrow("n", 1);
        moved = CStr(std::move(narrow));
    }
    EXPECT_STREQ(moved.Narrow(), "n");
}

TEST(CStr, ComparesExactlyInTheFormThatBothHave) {
    CStr wide(u"abc");
    CStr narrow("abc", 3);
    CStr upper("ABC", 3);
    CStr high("\xE9", 1);
    CStr none;
    CStr empty(u"");
    EXPECT_EQ(wide.Compare(narrow), 0);
    EXPECT_EQ(narrow.Compare(upper), 1);
    EXPECT_EQ(upper.Compare(high), -1);  // bytes are unsigned
    EXPECT_EQ(none.Compare(empty), -1);
    EXPECT_EQ(empty.Compare(none), 1);
    EXPECT_EQ(none.Compare(none), 0);
    EXPECT_EQ(empty.Compare(wide), -1);
}

}  // namespace
