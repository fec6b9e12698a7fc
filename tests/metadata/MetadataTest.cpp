// The metadata object, the transfer between tags and attributes, and the editor over real files.
#include <gtest/gtest.h>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/CACMetadataEditor.h"
#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

using namespace std::string_literals;
using Bytes = std::vector<uint8_t>;
using Pairs = std::vector<std::pair<std::u16string, std::u16string>>;

RefPtr<IAC3Metadata> NewMetadata() {
    RefPtr<IAC3Metadata> metadata;
    EXPECT_EQ(CreateMetadataObject(metadata.Put()), RESULT_OK);
    return metadata;
}

// The text of an attribute, or "(none)".
std::u16string Text(IAC3Metadata& metadata, uint32_t id) {
    char16_t* text = nullptr;
    if (metadata.GetString(id, &text) != RESULT_OK) return u"(none)";
    std::u16string copy(text);
    metadata.Free(text);
    return copy;
}

TagList List(const Pairs& pairs) {
    TagList tags;
    for (const auto& [name, value] : pairs) {
        CStr nameText(name.c_str());
        CStr valueText(value.c_str());
        AddTag(tags, nameText, valueText);
    }
    return tags;
}

Pairs Plain(TagList& tags) {
    Pairs pairs;
    for (TagEntry& tag : tags) pairs.emplace_back(tag.name.Wide(), tag.value.Wide());
    return pairs;
}

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

PicturePtr Picture(int32_t id, uint8_t byte) {
    PicturePtr picture(new PictureRecord);
    picture->id = id;
    picture->extension = u"jpg";
    picture->size = 2;
    picture->data = std::make_unique<uint8_t[]>(2);
    picture->data[0] = byte;
    return picture;
}

TEST(Metadata, MergeCopiesPicturesAndTakesOverTheFlags) {
    PictureSet source;
    source.m_records[3] = Picture(3, 30);
    source.m_records[-5] = Picture(9, 50);  // the key counts, not the record's id
    source.m_changed = true;
    const RefPtr<IAC3Metadata> metadata = NewMetadata();
    PictureSet* set = nullptr;
    EXPECT_EQ(metadata->GetPictureSet(&set), RESULT_OK);
    set->m_records[3] = Picture(3, 1);
    set->m_records[4] = Picture(4, 40);
    set->m_cleared = true;
    EXPECT_EQ(metadata->MergePictures(nullptr), RESULT_BAD_ARGUMENT);
    for (int turn = 0; turn < 2; ++turn) EXPECT_EQ(metadata->MergePictures(&source), RESULT_OK);
    source.m_records.clear();
    ASSERT_EQ(set->m_records.size(), 3U);
    EXPECT_EQ(set->m_records[3]->data[0], 30);
    EXPECT_EQ(set->m_records[-5]->id, 9);
    EXPECT_EQ(set->m_records[-5]->extension, u"jpg");
    EXPECT_EQ(set->m_records[4]->data[0], 40);
    EXPECT_TRUE(set->m_changed);
    EXPECT_FALSE(set->m_cleared);
    EXPECT_EQ(metadata->MergePictures(set), RESULT_OK);
    EXPECT_EQ(set->m_records.size(), 3U);

    const RefPtr<IAC3Metadata> copy = NewMetadata();
    const auto merge = [&] { return copy->MergePictures(set); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, merge,
                                [&] {
                                    PictureSet* half = nullptr;
                                    copy->GetPictureSet(&half);
                                    for (const auto& [id, picture] : half->m_records)
                                        ASSERT_TRUE(picture) << id;
                                }),
              RESULT_OK);
}

TEST(Metadata, TagsBecomeAttributesAndTheLastOneWins) {
    TagList tags = List({{u"track", u"07th"},
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
    EXPECT_EQ(metadata->GetLong(ATTR_TRACK), 7U);
    EXPECT_EQ(metadata->GetLong(ATTR_YEAR), 0xFFFFFFFF);
    EXPECT_EQ(metadata->GetLong(ATTR_MONTH), 0U);
    EXPECT_EQ(metadata->GetLong(ATTR_DAY), 0x7FFFFFFFU);
    EXPECT_EQ(Text(*metadata, ATTR_ARTIST), u"B");
    EXPECT_EQ(Text(*metadata, ATTR_BPM), u"120.5");
    EXPECT_EQ(Text(*metadata, ATTR_DISC), u"");
    EXPECT_EQ(metadata->GetAttributeCount(), 7U);

    metadata->SetString(ATTR_TITLE, u"  ");
    metadata->SetLong(ATTR_WRITER, 5);  // of another type: no tag
    MetadataToTags(tags, *metadata, ZeroNumbers::Drop);
    EXPECT_EQ(Plain(tags), (Pairs{{u"title", u""},
                                  {u"artist", u"B"},
                                  {u"bpm", u"120.5"},
                                  {u"year", u"-1"},
                                  {u"day", u"2147483647"},
                                  {u"track", u"7"}}));
    MetadataToTags(tags, *NewMetadata(), ZeroNumbers::Keep);
    EXPECT_EQ(Plain(tags), (Pairs{{u"year", u"0"}, {u"day", u"0"}, {u"month", u"0"}, {u"track", u"0"}}));
}

WavImage Recording(const std::string& info, uint16_t bits = 16) {
    WavImage image;
    image.Fmt(1, 1, 8000, bits).Data({1, 2, 3});
    if (!info.empty()) image.Header("LIST", static_cast<uint32_t>(info.size() + 4)).Bytes("INFO").Bytes(info);
    return image;
}

const std::string kInfo =
    "INAM\5\0\0\0Song\0\0ISFT\2\0\0\0x\0vltg\x16\0\0\0conductor=\xFF\xFE"s
    "Z\0\0\0=\xFF\xFE\0\0\0"s;

RefPtr<CACMetadataEditor> Editor(const ScopedFile& file) {
    return RefPtr<CACMetadataEditor>::Retain(new CACMetadataEditor(file.Wide().c_str()));
}

TEST(MetadataEditor, OpensWhatItCanSaveAndNothingElse) {
    struct Row {
        Bytes image;
        Result result;
    };
    for (const Row& row :
         {Row{Recording("").Image(), RESULT_OK}, Row{Recording("", 24).Image(), RESULT_NOT_PCM},
          Row{WavImage().Fmt(3, 1, 8000, 16).Data({}).Image(), RESULT_NOT_PCM},
          Row{WavImage().Data({1}).Image(), RESULT_NOT_WAVE}, Row{{'x'}, RESULT_NOT_WAVE}}) {
        const ScopedFile file(row.image);
        const RefPtr<CACMetadataEditor> editor = Editor(file);
        EXPECT_EQ(editor->Open(), row.result);
        if (row.result != RESULT_OK) {  // nothing is left open, and nothing is written
            const RefPtr<IAC3Metadata> metadata = NewMetadata();
            EXPECT_EQ(editor->SetMetadata(metadata.Get()), RESULT_OK);
            EXPECT_EQ(editor->Save(), RESULT_OK);
            EXPECT_EQ(Editor(file)->Open(), row.result);
        } else {
            EXPECT_EQ(Editor(file)->Open(), RESULT_FILE_IN_USE);
        }
        EXPECT_EQ(editor->Close(), RESULT_OK);
        EXPECT_EQ(file.Bytes(), row.image);
    }
    EXPECT_EQ(Editor(ScopedFile())->Open(), RESULT_CANNOT_OPEN);
    const ScopedFile readOnly(Recording("").Image());
    permissions(readOnly.Path(), std::filesystem::perms::owner_read);
    EXPECT_EQ(Editor(readOnly)->Open(), RESULT_CANNOT_OPEN);
}

TEST(MetadataEditor, SavesByTheThreeRoads) {
    // Neither asked nor told: nothing changes.
    const Bytes before = Recording(kInfo).Image();
    const ScopedFile file(before);
    RefPtr<CACMetadataEditor> editor = Editor(file);
    ASSERT_EQ(editor->Open(), RESULT_OK);
    EXPECT_EQ(editor->Save(), RESULT_OK);
    EXPECT_EQ(file.Bytes(), before);

    // Asked alone: unknown tags survive.
    ASSERT_EQ(editor->Open(), RESULT_OK);
    RefPtr<IAC3Metadata> metadata;
    ASSERT_EQ(editor->GetMetadata(metadata.Put()), RESULT_OK);
    EXPECT_EQ(Text(*metadata, ATTR_TITLE), u"Song");
    EXPECT_EQ(metadata->GetAttributeCount(), 1U);
    EXPECT_EQ(editor->Save(), RESULT_OK);
    const auto saved = [&] {
        const Bytes bytes = file.Bytes();
        return std::string(bytes.begin(), bytes.end());
    };
    EXPECT_TRUE(saved().ends_with(kInfo));

    // Told: the tags are what was told, several times over; other chunks stay.
    ASSERT_EQ(editor->Open(), RESULT_OK);
    EXPECT_EQ(editor->SetMetadata(nullptr), RESULT_BAD_ARGUMENT);
    metadata->SetString(ATTR_COMPOSER, u"\u6B66\u6E80");
    EXPECT_EQ(editor->SetMetadata(metadata.Get()), RESULT_OK);
    const RefPtr<IAC3Metadata> more = NewMetadata();
    more->SetString(ATTR_TITLE, u"\u20ACuro");
    more->SetLong(ATTR_YEAR, 1999);
    EXPECT_EQ(editor->SetMetadata(more.Get()), RESULT_OK);
    EXPECT_EQ(editor->Save(), RESULT_OK);

    const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
    ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
    ASSERT_EQ(reader->GetMetadata(metadata.Put()), RESULT_OK);
    EXPECT_EQ(Text(*metadata, ATTR_TITLE), u"\u20ACuro");
    EXPECT_EQ(Text(*metadata, ATTR_COMPOSER), u"\u6B66\u6E80");
    EXPECT_EQ(metadata->GetLong(ATTR_YEAR), 1999U);
    const std::string text = saved();
    EXPECT_NE(text.find("ISFT\2\0\0\0x\0"s), std::string::npos);
    EXPECT_EQ(text.find("conductor"), std::string::npos);
    EXPECT_EQ(text.substr(44, 6), "\1\0\2\0\3\0"s);
    EXPECT_EQ(text.size() - 8, file.Bytes()[4]);
}

TEST(MetadataEditor, AnswersFromTheLastOpenWhenClosed) {
    const ScopedFile file(Recording(kInfo).Image());
    const RefPtr<CACMetadataEditor> editor = Editor(file);
    AudioFormatInfo format{};
    EXPECT_EQ(editor->GetSourceFormat(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(editor->GetMetadata(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(editor->Open(), RESULT_OK);
    EXPECT_EQ(editor->Close(), RESULT_OK);
    EXPECT_EQ(editor->Close(), RESULT_OK);
    EXPECT_EQ(editor->GetSourceFormat(&format), RESULT_OK);
    EXPECT_EQ(format.samplesPerSec, 8000U);
    RefPtr<IAC3Metadata> metadata;
    EXPECT_EQ(RunWithMoreMemory(
                  RESULT_NO_MEMORY, [&] { return editor->GetMetadata(metadata.Put()); },
                  [&] { EXPECT_FALSE(metadata); }),
              RESULT_OK);
    EXPECT_EQ(editor->GetMetadata(metadata.Put()), RESULT_OK);
    EXPECT_EQ(Text(*metadata, ATTR_TITLE), u"Song");
}

TEST(MetadataEditor, WithoutMemorySaveLeavesTheFileAsItWas) {
    const Bytes before = Recording(kInfo).Image();
    const ScopedFile file(before);
    const RefPtr<CACMetadataEditor> editor = Editor(file);
    const RefPtr<IAC3Metadata> metadata = NewMetadata();
    metadata->SetString(ATTR_TITLE, u"A longer title than fits into a short string");
    ASSERT_EQ(editor->SetMetadata(metadata.Get()), RESULT_OK);
    for (int allocations = 0;; ++allocations) {
        ASSERT_EQ(editor->Open(), RESULT_OK);
        const Result saved = [&] {
            const FailingAllocator heap(allocations);
            return editor->Save();
        }();
        if (file.Bytes() != before) {
            EXPECT_EQ(saved, RESULT_OK);
            EXPECT_GT(allocations, 5);
            break;
        }
    }
}

}  // namespace
