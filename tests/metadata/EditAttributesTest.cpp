// What ATTR_EDIT_ANY_FORMAT, ATTR_EDIT_CHANGED_ONLY and ATTR_INFO_ENCODING promise, and that nothing changes
// without them.
#include <cerrno>
#include <chrono>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/CACMetadataEditor.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "AudioCodec/wave/CACWriter.h"
#include "riff/TagEntries.h"
#include "riff/TagTable.h"
#include "tests/metadata/MetadataHelpers.h"
#include "tests/platform/SystemFaults.h"
#include "tests/support/FailingAllocator.h"
#include "tests/wave/SaveLayouts.h"

namespace {

using namespace save_test;
using Metadata = RefPtr<IAC3Metadata>;

struct Options {
    bool anyFormat = false, changedOnly = false;
    uint32_t encoding = INFO_ENCODING_ANSI;
};
constexpr Options kChangedOnly{false, true, INFO_ENCODING_ANSI};

RefPtr<CACMetadataEditor> Editor(const ScopedFile& file, const Options& options) {
    auto editor = RefPtr<CACMetadataEditor>::Retain(new CACMetadataEditor(file.Wide().c_str()));
    editor->SetBool(ATTR_EDIT_ANY_FORMAT, options.anyFormat);
    editor->SetBool(ATTR_EDIT_CHANGED_ONLY, options.changedOnly);
    editor->SetLong(ATTR_INFO_ENCODING, options.encoding);
    return editor;
}

Metadata TagsOf(const ScopedFile& file, const Options& options = {}) {
    const auto editor = Editor(file, options);
    Metadata metadata;
    EXPECT_EQ(editor->Open(), RESULT_OK);
    EXPECT_EQ(editor->GetMetadata(metadata.Put()), RESULT_OK);
    return metadata;
}

// All that is written, in its own form.
TagPairs Written(IAC3Metadata& metadata) {
    TagPairs pairs;
    for (uint32_t place = 1; const TagRow* const row = FindTagWrittenAt(place); ++place) {
        const std::u16string name(row->keyword.begin(), row->keyword.end());
        const std::string number = std::to_string(static_cast<int32_t>(metadata.GetLong(row->id)));
        pairs.emplace_back(name, row->kind == TagKind::Text ? Text(metadata, row->id)
                                                            : std::u16string(number.begin(), number.end()));
    }
    return pairs;
}

void Set(IAC3Metadata& metadata, uint32_t id, const std::u16string& value) {
    const std::string digits(value.begin(), value.end());
    if (FindTagById(id)->kind == TagKind::Text)
        metadata.SetString(id, value == u"(none)" ? nullptr : value.c_str());
    else
        metadata.SetLong(id, static_cast<uint32_t>(std::stol(digits)));
}

Result SaveWith(const ScopedFile& file, const Options& options, IAC3Metadata& metadata) {
    const WithFaults quick({.flushes = false});
    const auto editor = Editor(file, options);
    EXPECT_EQ(editor->Open(), RESULT_OK);
    EXPECT_EQ(editor->SetMetadata(&metadata), RESULT_OK);
    return editor->Save();
}
// The file's own tags with one changed; the tags that the host wanted then.
TagPairs Change(const ScopedFile& file, const Options& options, uint32_t id, const std::u16string& value) {
    const Metadata metadata = TagsOf(file, options);
    Set(*metadata, id, value);
    EXPECT_EQ(SaveWith(file, options, *metadata), RESULT_OK);
    return Written(*metadata);
}

Tags ChunksIn(const ScopedFile& file) {
    CWaveFile wave;
    EXPECT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    return wave.Chunks();
}

// --- lists

std::string Entry(const std::string& id, const std::string& content, char pad = '\0') {
    std::string bytes = None().Header(id, static_cast<uint32_t>(content.size())).Bytes(content).Text();
    return content.size() & 1 ? bytes + pad : bytes;
}
std::string Wide(const std::string& name, std::u16string_view value) {
    std::string bytes;
    AppendTagEntry(bytes, name, value);
    return bytes;
}
WavImage WithList(const std::string& entries) {
    return Pcm().Chunk("data", kAudio).Chunk("LIST", "INFO" + entries).Sized();
}
// The entries of the file's last list; "(none)" without one.
std::string ListIn(const ScopedFile& file) {
    const auto chunks = CleanWalk(Bytes(file));
    EXPECT_TRUE(chunks);
    return chunks && chunks->back().IsList() ? chunks->back().content.substr(4) : "(none)";
}

const std::string kMood = "Mood=\xFE\xFF\0a\0\0"s;  // an unknown entry, big-endian
// Of every shape that other programs leave: no order, ids twice, pad bytes of any value, padding.
const std::string kOdd = Entry("vltg", kMood + Wide("bPm", u"120 ") + Wide("day", u"07") + "\0"s) +
                         Entry("IXYZ", "unknown\xFF", 'q') + Entry("INAM", "Old", 'p') + Entry("ICMT", "") +
                         Entry("ICRD", "05/24/99  13:07:47\0"s) + Entry("IARL", "Shelf 12\0"s) +
                         Entry("INAM", "second\0"s) + Entry("IART", " \xE9t\xE9 \0\0pad"s);

// --- any format

struct Format {
    uint16_t tag, bits;
};
constexpr Format kFormats[] = {{1, 16}, {1, 24}, {3, 32}, {0xFFFE, 24}, {17, 4}};
constexpr uint16_t kToldAlign = 77;  // follows from nothing: whoever rewrites the record shows

// The layout with another format in its record, whatever the record's size is.
Layout As(Layout layout, const Format& format) {
    std::vector<uint8_t> bytes = layout.image.Image();
    uint8_t* const record = bytes.data() + layout.image.Text().find("fmt ") + 8;
    StoreLE16(record, format.tag);
    StoreLE16(record + 12, kToldAlign);
    StoreLE16(record + 14, format.bits);
    layout.image = WavImage(std::string(bytes.begin(), bytes.end()));
    return layout;
}

TEST(EditAttributes, AFileOfAnyFormatKeepsAudioRecordAndForeignChunks) {
    for (const Format& format : kFormats) {
        for (const Layout& plain : Layouts()) {
            SCOPED_TRACE(plain.name + ", " + std::to_string(format.tag));
            const Layout layout = As(plain, format);
            const ScopedFile file(layout.image.Image());
            EXPECT_EQ(Editor(file, kChangedOnly)->Open(), format.bits == 16 ? RESULT_OK : RESULT_NOT_PCM);
            Change(file, {true, true, INFO_ENCODING_ANSI}, ATTR_TITLE, u"A longer title than there was");
            Tags fresh = layout.old;
            fresh.Set(FourCC("INAM"), "A longer title than there was\0"s);
            ExpectSaved(file, layout, fresh);
            // The road that writes all tags anew.
            EXPECT_EQ(SaveWith(file, {.anyFormat = true}, *NewMetadata()), RESULT_OK);
            ExpectSaved(file, layout, ChunksIn(file));
        }
    }
}

TEST(EditAttributes, AReadThatFailsInTheWalkMakesNoSaveThatLosesTags) {
    // The list's header is read by a read of its own, far from the head of the file.
    const WavImage image = Pcm()
                               .Chunk("data", std::string(9000, 'a'))
                               .Chunk("LIST", "INFO" + Entry("IART", "Artist\0"s))
                               .Sized();
    for (const Options& options : {Options{}, kChangedOnly}) {
        int failedSaves = 0;
        bool goesOn = true;
        for (int n = 0; goesOn; ++n) {
            const ScopedFile file(image.Image());
            const auto editor = Editor(file, options);
            Metadata metadata;
            {
                const WithFaults faults({.callsUntilError = n, .error = EIO});
                const Result opened = editor->Open();
                goesOn = faults.CallsSeen() > n;
                if (opened != RESULT_OK) continue;
            }
            ASSERT_EQ(editor->GetMetadata(metadata.Put()), RESULT_OK);
            metadata->SetString(ATTR_TITLE, u"New");
            EXPECT_EQ(editor->SetMetadata(metadata.Get()), RESULT_OK);
            const Result saved = editor->Save();
            EXPECT_EQ(saved, goesOn && options.changedOnly ? RESULT_NOT_WAVE : RESULT_OK);
            EXPECT_EQ(Bytes(file) == image.Text(), goesOn) << n;
            EXPECT_EQ(Text(*TagsOf(file), ATTR_ARTIST), u"Artist");
            failedSaves += goesOn;
        }
        EXPECT_GT(failedSaves, 0);
    }
    // Nor does the next one, after an Open that could read all: an older list isn't the file's tags.
    const WavImage lists = Pcm()
                               .Chunk("LIST", "INFO" + Entry("IART", "Older\0"s))
                               .Chunk("data", std::string(9000, 'a'))
                               .Chunk("LIST", "INFO" + Entry("IART", "Artist\0"s))
                               .Sized();
    for (int n = 0; n < 4; ++n) {
        const ScopedFile file(lists.Image());
        const auto editor = Editor(file, {});
        Metadata metadata;
        {
            const WithFaults faults({.callsUntilError = n, .error = EIO});
            editor->Open();
        }
        EXPECT_EQ(editor->GetMetadata(metadata.Put()), RESULT_OK);
        for (int turn = 0; turn < 2; ++turn) {
            EXPECT_EQ(editor->Save(), RESULT_OK);
            EXPECT_EQ(editor->Open(), RESULT_OK);
        }
        editor->Close();
        EXPECT_EQ(Text(*TagsOf(file), ATTR_ARTIST), u"Artist") << n;
    }
    // And what a save reads itself, to tell audio of unknown length from chunks after it.
    const WavImage recorder = Pcm()
                                  .Header("data", 0)
                                  .Chunk("bext", std::string(9000, 'b'))
                                  .Chunk("LIST", "INFO" + Entry("IART", "Artist\0"s));
    const Metadata metadata = NewMetadata();
    metadata->SetString(ATTR_TITLE, u"New");
    bool failed = true;
    for (int n = 0; failed; ++n) {
        const ScopedFile file(recorder.Image());
        const auto editor = Editor(file, {.anyFormat = true});
        ASSERT_EQ(editor->Open(), RESULT_OK);
        editor->SetMetadata(metadata.Get());
        {
            const WithFaults faults({.callsUntilError = n, .flushes = false, .error = EIO});
            failed = editor->Save() != RESULT_OK;
        }
        EXPECT_TRUE(Bytes(file) == recorder.Text() || ChunksIn(file).Find(FourCC("INAM"))) << n;
        EXPECT_EQ(Number(Bytes(file), recorder.Text().rfind("data") + 4), 0u) << n;
    }
    // And the list, which is read again when it is changed.
    const ScopedFile file(image.Image());
    const auto editor = Editor(file, kChangedOnly);
    ASSERT_EQ(editor->Open(), RESULT_OK);
    editor->SetMetadata(NewMetadata().Get());
    {
        const WithFaults faults({.callsUntilError = 0, .error = EIO});
        EXPECT_EQ(editor->Save(), RESULT_NOT_WAVE);
    }
    EXPECT_EQ(Bytes(file), image.Text());
}

// --- only what changed

TEST(EditAttributes, NothingChangedWritesNothing) {
    std::vector<WavImage> images{WithList(kOdd), WithList(kOdd + Entry("ISFT", "cut").substr(0, 11)),
                                 WithList(kOdd + "rest"), WithList("")};
    for (const Layout& layout : Layouts()) images.push_back(As(layout, kFormats[1]).image);
    for (const WavImage& image : images) {
        const ScopedFile file(image.Image());
        const auto time = std::filesystem::last_write_time(file.Path()) - std::chrono::hours(1);
        std::filesystem::last_write_time(file.Path(), time);
        const Options options{true, true, INFO_ENCODING_EITHER};
        const Metadata metadata = TagsOf(file, options);
        const auto editor = Editor(file, options);
        ASSERT_EQ(editor->Open(), RESULT_OK);
        Metadata asked;
        EXPECT_EQ(editor->GetMetadata(asked.Put()), RESULT_OK);
        EXPECT_EQ(editor->Save(), RESULT_OK);
        EXPECT_EQ(SaveWith(file, options, *metadata), RESULT_OK);
        EXPECT_TRUE(Bytes(file) == image.Text());
        EXPECT_EQ(std::filesystem::last_write_time(file.Path()), time);
    }
}

TEST(EditAttributes, AChangedTagReadsBackAndAllElseStaysToTheByte) {
    const std::string tags = kMood + Wide("bPm", u"120 ") + Wide("day", u"07");
    const auto with = [&](const std::string& entries) {  // in place of the odd list's "vltg"
        return Entry("vltg", entries + "\0"s) + kOdd.substr(Entry("vltg", tags + "\0"s).size());
    };
    const auto replaced = [](std::string list, const std::string& old, const std::string& fresh) {
        EXPECT_NE(list.find(old), std::string::npos);
        return list.replace(list.find(old), old.size(), fresh);
    };
    const std::string second = Entry("INAM", "second\0"s), date = Entry("ICRD", "05/24/99  13:07:47\0"s);
    const std::string title = Entry("INAM", "Old", 'p');
    const struct {
        uint32_t id;
        std::u16string value;
        std::string list;
    } rows[] = {
        {ATTR_TITLE, u"New", replaced(replaced(kOdd, second, ""), title, Entry("INAM", "New\0"s))},
        {ATTR_TITLE, u"(none)", replaced(replaced(kOdd, second, ""), title, "")},
        {ATTR_ALBUM, u"\u20AC", kOdd + Entry("IPRD", "\x80\0"s)},
        {ATTR_COMMENT, u"(none)", replaced(kOdd, Entry("ICMT", ""), "")},
        {ATTR_YEAR, u"1999", replaced(kOdd, date, Entry("ICRD", "1999\0"s))},
        {ATTR_YEAR, u"0", replaced(kOdd, date, "")},
        {ATTR_BPM, u"121", with(kMood + Wide("bpm", u"121") + Wide("day", u"07"))},
        {ATTR_DAY, u"0", with(kMood + Wide("bPm", u"120 "))},
        {ATTR_COMPOSER, u"\u6B66", with(tags + Wide("composer", u"\u6B66"))},
        {ATTR_TRACK, u"12", with(tags + Wide("track", u"12"))},  // the shelf stays
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(FindTagById(row.id)->keyword);
        const ScopedFile file(WithList(kOdd).Image());
        const TagPairs wanted = Change(file, kChangedOnly, row.id, row.value);
        EXPECT_EQ(ListIn(file), row.list);
        EXPECT_EQ(Written(*TagsOf(file)), wanted);
    }
}

// The save moves it to the end of the file, where it reaches past that too.
TEST(EditAttributes, AnEntryThatReachesPastItsListIsOneWhereverTheListStands) {
    const std::string cut = None().Header("IXYZ", 900).Bytes("cut off.").Text();
    const WavImage image = Pcm().Chunk("LIST", "INFO" + Entry("INAM", "Old\0"s) + cut);
    const ScopedFile file(WavImage(image).Chunk("data", std::string(2000, 'x')).Sized().Image());
    const TagPairs wanted = Change(file, kChangedOnly, ATTR_TITLE, u"New");
    EXPECT_EQ(ListIn(file), Entry("INAM", "New\0"s) + cut);
    EXPECT_EQ(Written(*TagsOf(file)), wanted);
    EXPECT_EQ(ChunksIn(file).Find(FourCC("IXYZ")), "cut off.");
}

TEST(EditAttributes, DatesTracksAndSecondPlaces) {
    const std::string performer = Wide("performer", u"P"), none = "(none)";
    const struct {
        std::string list;
        uint32_t id;
        std::u16string value;
        std::string changed;
    } rows[] = {
        {Entry("ICRD", "2004-05-06\0"s), ATTR_YEAR, u"1999", Entry("ICRD", "1999-05-06\0"s)},
        {Entry("ICRD", "2004-05-06"), ATTR_YEAR, u"3", Entry("ICRD", "0003-05-06\0"s)},
        {Entry("ICRD", "20040506"), ATTR_YEAR, u"1999", Entry("ICRD", "19990506\0"s)},
        {Entry("ICRD", "05061999"), ATTR_YEAR, u"1999", Entry("ICRD", "1999\0"s)},
        {Entry("ICRD", "99\0"s), ATTR_YEAR, u"1999", Entry("ICRD", "1999\0"s)},
        {Entry("ICRD", "2004-05-06\0"s), ATTR_YEAR, u"12345", Entry("vltg", Wide("year", u"12345") + "\0"s)},
        {Entry("ICRD", "2004"), ATTR_YEAR, u"-5", Entry("ICRD", "-5\0"s)},
        {Entry("IARL", "12\0"s), ATTR_TRACK, u"3", Entry("IARL", "3\0"s)},
        {Entry("IARL", "007 \0\0"s), ATTR_TRACK, u"0", none},
        {Entry("IARL", "12\0"s), ATTR_TRACK, u"-1", Entry("vltg", Wide("track", u"-1") + "\0"s)},
        {Entry("IARL", "3rd shelf"), ATTR_TRACK, u"5",
         Entry("IARL", "3rd shelf") + Entry("vltg", Wide("track", u"5") + "\0"s)},
        {Entry("IARL", "3rd shelf"), ATTR_TRACK, u"0",
         Entry("IARL", "3rd shelf") + Entry("vltg", Wide("track", u"0") + "\0"s)},
        {Entry("IARL", "Shelf") + Entry("vltg", Wide("track", u"5") + "\0"s), ATTR_TRACK, u"0",
         Entry("IARL", "Shelf")},
        {Entry("IART", "A\0"s) + Entry("vltg", performer + "\0"s), ATTR_ARTIST, u"B", Entry("IART", "B\0"s)},
        {Entry("vltg", performer + kMood), ATTR_ARTIST, u"(none)", Entry("vltg", kMood + "\0"s)},
        {Entry("vltg", Wide("TITLE", u"T") + "dam"), ATTR_TITLE, u"N",
         Entry("vltg", "dam") + Entry("INAM", "N\0"s)},
        // Irregular ends, which stay the end.
        {Entry("INAM", "odd").substr(0, 11), ATTR_GENRE, u"G",
         Entry("IGNR", "G\0"s) + Entry("INAM", "odd").substr(0, 11)},
        {"rest", ATTR_GENRE, u"G", Entry("IGNR", "G\0"s) + "rest"},
        {Entry("ISFT", "abcdef") + Entry("INAM", "").substr(0, 5), ATTR_GENRE, u"G",
         Entry("ISFT", "abcdef") + Entry("IGNR", "G\0"s) + "INAM\0"s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.list + ", " + std::string(row.value.begin(), row.value.end()));
        const ScopedFile file(WithList(row.list).Image());
        const TagPairs wanted = Change(file, kChangedOnly, row.id, row.value);
        EXPECT_EQ(ListIn(file), row.changed);
        EXPECT_EQ(Written(*TagsOf(file)), wanted);
        const std::string once = Bytes(file);
        Change(file, kChangedOnly, row.id, row.value);
        EXPECT_TRUE(Bytes(file) == once) << "a second save grows nothing";
    }
}

TEST(EditAttributes, WithoutMemoryTheFileStaysAsItWas) {
    const ScopedFile file(WithList(kOdd).Image());
    const std::string before = Bytes(file);
    const Metadata metadata = TagsOf(file);
    metadata->SetString(ATTR_TITLE, u"A longer title than fits into a short string");
    const auto editor = Editor(file, kChangedOnly);
    ASSERT_EQ(editor->SetMetadata(metadata.Get()), RESULT_OK);
    const TagPairs wanted = Written(*metadata);
    for (int allocations = 0; Bytes(file) == before; ++allocations) {
        ASSERT_EQ(editor->Open(), RESULT_OK);
        const WithFaults quick({.flushes = false});
        const FailingAllocator heap(allocations, true);
        const Result saved = editor->Save();
        EXPECT_EQ(saved, FailingAllocator::HasFailed() ? RESULT_NO_MEMORY : RESULT_OK);
    }
    EXPECT_EQ(Written(*TagsOf(file)), wanted);
}

// A host that goes on after each failure. The tags are old or new afterwards, all of them.
TEST(EditAttributes, AnAllocationThatFailsOnTheWayTakesNoTagAway) {
    std::string list = kOdd;
    list.replace(list.find("05/24/99  "), 10, "2004-05-06");
    for (const Options& options : {Options{}, kChangedOnly}) {
        bool failed = true;
        for (int n = 0; failed && !HasFailure(); ++n) {
            const ScopedFile file(WithList(list).Image());
            const Metadata wanted = TagsOf(file);
            const TagPairs old = Written(*wanted);
            wanted->SetString(ATTR_TITLE, u"New");
            const auto editor = Editor(file, options);
            {
                const WithFaults quick({.flushes = false});
                const FailingAllocator heap(n, true);
                Metadata metadata;
                const bool isOpen = editor->Open() == RESULT_OK;
                const bool isGiven = editor->GetMetadata(metadata.Put()) == RESULT_OK && isOpen;
                if (isGiven && metadata->SetString(ATTR_TITLE, u"New") == RESULT_OK)
                    editor->SetMetadata(metadata.Get());
                editor->Save();
                // Once more, with what is left of all that.
                editor->GetMetadata(metadata.Put());
                if (editor->Open() == RESULT_OK) editor->Save();
            }
            failed = FailingAllocator::HasFailed();
            const TagPairs tags = Written(*TagsOf(file));
            EXPECT_TRUE(tags == Written(*wanted) || (failed && tags == old)) << n;
        }
    }
}

// What a store hands out is from another heap.
TEST(EditAttributes, ASourceWithoutMemoryForATextIsNotOneWithoutTheText) {
    struct Source : CMetadata {
        Result GetString(uint32_t id, char16_t** text) override {
            return id == ATTR_ARTIST ? RESULT_NO_MEMORY : CMetadata::GetString(id, text);
        }
    };
    const auto source = RefPtr<Source>::Retain(new Source);
    source->SetString(ATTR_TITLE, u"New");
    EXPECT_EQ(NewMetadata()->CopyFrom(source.Get()), RESULT_OK);  // which reports nothing
    const ScopedFile file(WithList(kOdd).Image());
    const auto editor = Editor(file, kChangedOnly);
    ASSERT_EQ(editor->Open(), RESULT_OK);
    EXPECT_EQ(editor->SetMetadata(source.Get()), RESULT_NO_MEMORY);
    EXPECT_EQ(editor->Save(), RESULT_OK);
    EXPECT_EQ(Bytes(file), WithList(kOdd).Text());
    EXPECT_EQ(RefPtr<CACWriter>::Retain(new CACWriter)->SetMetadata(source.Get()), RESULT_NO_MEMORY);
}

// --- the encoding of texts

TEST(EditAttributes, TextsAreReadInTheEncodingThatIsSet) {
    const ScopedFile file(WithList(Entry("INAM", "\xC3\xA9\0"s) + Entry("IART", "\xE9\0"s) +
                                   Entry("IPRD", "a\xC3\xA9\xFF\0"s) + Entry("ICRD", "\xC3\xA9 1"))
                              .Image());
    const struct {
        uint32_t encoding;
        std::u16string title, artist, album;
    } rows[] = {
        {INFO_ENCODING_ANSI, u"\u00C3\u00A9", u"\u00E9", u"a\u00C3\u00A9\u00FF"},
        {INFO_ENCODING_UTF8, u"\u00E9", {u'\xDCE9'}, {u'a', u'\u00E9', u'\xDCFF'}},
        {INFO_ENCODING_EITHER, u"\u00E9", u"\u00E9", u"a\u00C3\u00A9\u00FF"},
        {99, u"\u00C3\u00A9", u"\u00E9", u"a\u00C3\u00A9\u00FF"},
    };
    for (const auto& row : rows) {
        const auto reader = RefPtr<CACStreamReader>::Retain(new CACStreamReader);
        reader->SetLong(ATTR_INFO_ENCODING, row.encoding);
        Metadata read;
        ASSERT_EQ(reader->Open(file.Wide().c_str(), OPEN_READ_ONLY), RESULT_OK);
        ASSERT_EQ(reader->GetMetadata(read.Put()), RESULT_OK);
        reader->Close();
        for (const Metadata& metadata : {read, TagsOf(file, {.encoding = row.encoding})}) {
            EXPECT_EQ(Text(*metadata, ATTR_TITLE), row.title);
            EXPECT_EQ(Text(*metadata, ATTR_ARTIST), row.artist);
            EXPECT_EQ(Text(*metadata, ATTR_ALBUM), row.album);
        }
    }
}

TEST(EditAttributes, AListIsWrittenInOneEncoding) {
    const std::string ansi = Entry("IART", "\xE9\0pad"s), utf8 = Entry("IART", "\xC3\xA9\0"s);
    const std::string software = Entry("ISFT", "\xE9"), plain = Entry("IART", "A\0"s);
    const struct {
        uint32_t encoding;
        std::string list;
        std::u16string album;
        std::string changed;
    } rows[] = {
        {INFO_ENCODING_ANSI, ansi, u"\u6B66", ansi + Entry("IPRD", "?\0"s)},
        {INFO_ENCODING_UTF8, ansi, u"\u00E9", ansi + Entry("IPRD", "\xC3\xA9\0"s)},
        {INFO_ENCODING_EITHER, ansi, u"\u20AC", ansi + Entry("IPRD", "\x80\0"s)},
        {INFO_ENCODING_EITHER, utf8, u"\u20AC", utf8 + Entry("IPRD", "\xE2\x82\xAC\0"s)},
        {INFO_ENCODING_EITHER, plain, u"\u20AC", plain + Entry("IPRD", "\x80\0"s)},
        {INFO_ENCODING_EITHER, plain, u"\u6B66", plain + Entry("IPRD", "\xE6\xAD\xA6\0"s)},
        // In Windows-1252 it would be read as another text.
        {INFO_ENCODING_EITHER, plain, u"\u00C3\u00A9", plain + Entry("IPRD", "\xC3\x83\xC2\xA9\0"s)},
        // The list as a whole; what is no tag stays.
        {INFO_ENCODING_EITHER, ansi + software, u"\u6B66",
         Entry("IART", "\xC3\xA9\0pad"s) + software + Entry("IPRD", "\xE6\xAD\xA6\0"s)},
    };
    for (const auto& row : rows) {
        const ScopedFile file(WithList(row.list).Image());
        const Options options{false, true, row.encoding};
        const TagPairs wanted = Change(file, options, ATTR_ALBUM, row.album);
        EXPECT_EQ(ListIn(file), row.changed);
        const Metadata held = TagsOf(file, options);
        if (row.encoding != INFO_ENCODING_ANSI) {
            EXPECT_EQ(Written(*held), wanted);
        }
        // The road that writes all anew: every text, and bytes that are no UTF-8 too, come back.
        EXPECT_EQ(SaveWith(file, {.encoding = row.encoding}, *held), RESULT_OK);
        EXPECT_EQ(Written(*TagsOf(file, options)), Written(*held));
    }
}

// --- the writer

std::string WrittenFile(const Options& options, IAC3Metadata& metadata) {
    const ScopedFile file;
    const auto writer = RefPtr<CACWriter>::Retain(new CACWriter);
    writer->SelectFormat(0);
    writer->SetFormat(1, 8000, 2);
    EXPECT_EQ(writer->SetMetadata(&metadata), RESULT_OK);
    EXPECT_EQ(writer->Open(file.Wide().c_str(), 0), RESULT_OK);
    writer->SetBool(ATTR_EDIT_CHANGED_ONLY, options.changedOnly);
    writer->SetLong(ATTR_INFO_ENCODING, options.encoding);
    EXPECT_EQ(writer->Close(), RESULT_OK);
    return Bytes(file);
}

TEST(EditAttributes, TheWriterStoresWhatReadsBack) {
    const Metadata metadata = NewMetadata();
    const std::string empty = WrittenFile({}, *metadata);
    EXPECT_EQ(WrittenFile(kChangedOnly, *metadata), empty);
    for (const uint32_t id : {ATTR_TITLE, ATTR_COMPOSER, ATTR_WRITER, ATTR_GENRE, ATTR_BPM})
        metadata->SetString(id, u"\u00E9 1");
    for (const uint32_t id : {ATTR_YEAR, ATTR_TRACK, ATTR_MONTH}) metadata->SetLong(id, 12);
    EXPECT_EQ(WrittenFile(kChangedOnly, *metadata), WrittenFile({}, *metadata));

    metadata->SetLong(ATTR_YEAR, 12345);
    metadata->SetLong(ATTR_TRACK, static_cast<uint32_t>(-1));
    metadata->SetString(ATTR_TITLE, u"\u6B66");
    for (const uint32_t encoding : {INFO_ENCODING_UTF8, INFO_ENCODING_EITHER}) {
        const std::string bytes = WrittenFile({false, true, encoding}, *metadata);
        const ScopedFile file(std::vector<uint8_t>(bytes.begin(), bytes.end()));
        EXPECT_EQ(Written(*TagsOf(file, {.encoding = encoding})), Written(*metadata));
        EXPECT_NE(WrittenFile({.encoding = encoding}, *metadata).find("\xE6\xAD\xA6"), std::string::npos);
    }
}

TEST(EditAttributes, TheWriterStoresAllTagsOrTellsThatThereAreNone) {
    const Metadata metadata = NewMetadata();
    for (const uint32_t id : {ATTR_TITLE, ATTR_COMPOSER, ATTR_GENRE}) metadata->SetString(id, u"\u00E9 1");
    for (const bool changedOnly : {false, true}) {
        bool failed = true;
        for (int n = 0; failed && !HasFailure(); ++n) {
            const ScopedFile file;
            const auto writer = RefPtr<CACWriter>::Retain(new CACWriter);
            writer->SetBool(ATTR_EDIT_CHANGED_ONLY, changedOnly);
            writer->SelectFormat(0);
            writer->SetFormat(1, 8000, 2);
            EXPECT_EQ(writer->Open(file.Wide().c_str(), 0), RESULT_OK);
            uint32_t accepted = 0;
            EXPECT_EQ(writer->Write(kAudio.data(), 2, &accepted), RESULT_OK);
            const Result result = [&] {
                const FailingAllocator heap(n, true);
                const Result set = writer->SetMetadata(metadata.Get());
                const Result closed = writer->Close();
                return set == RESULT_OK ? closed : set;
            }();
            failed = FailingAllocator::HasFailed();
            EXPECT_EQ(result, failed ? RESULT_NO_MEMORY : RESULT_OK) << n;
            EXPECT_EQ(ChunksIn(file).size(), failed ? 0u : 3u) << n;
        }
    }
}

}  // namespace
