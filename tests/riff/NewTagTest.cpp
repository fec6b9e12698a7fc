// Proves that a new tag is one row: nothing else here or in the product knows of it.
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "riff/TagRows.h"
#include "tests/metadata/MetadataHelpers.h"

namespace {

using namespace std::string_literals;

constexpr uint32_t kMood = 0x149000FF;
constexpr uint32_t kMoodChunk = FourCC("IMOD");

}  // namespace

std::span<const TagRow> TagTable() {
    static const std::vector<TagRow> s_rows = [] {
        std::vector<TagRow> rows(std::begin(TagRows::kRows), std::end(TagRows::kRows));
        rows.push_back({kMood, TagKind::Text, TagRows::kBoth, "mood", 25, 15, kMoodChunk, TagForm::Text});
        return rows;
    }();
    return s_rows;
}

namespace {

TEST(NewTag, OfOneRowIsReadCopiedAndWritten) {
    TagList tags;
    ChunksToTags(tags, {{kMoodChunk, "Blue \x80\0"s}});
    const RefPtr<IAC3Metadata> read = NewMetadata();
    TagsToMetadata(tags, *read);
    const RefPtr<IAC3Metadata> copy = NewMetadata();
    copy->CopyFrom(read.Get());
    MetadataToTags(tags, *copy, ZeroNumbers::Drop);
    InfoChunks chunks;
    TagsToChunks(tags, chunks);
    EXPECT_EQ(chunks, (InfoChunks{{kMoodChunk, "Blue \x80\0"s}}));
    EXPECT_EQ(FindTagByKeyword("MOOD"), FindTagShownAt(25));
}

}  // namespace
