// Proves that a new tag is one row: nothing else here or in the product knows of it.
#include <algorithm>

#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "riff/TagRows.h"
#include "tests/metadata/MetadataHelpers.h"

namespace {

using namespace std::string_literals;

constexpr uint32_t kNewTag = 0x149000FF;
constexpr uint32_t kNewChunk = FourCC("IMOD");

}  // namespace

std::span<const TagRow> TagTable() {
    static const std::vector<TagRow> s_rows = [] {
        std::vector<TagRow> rows(std::begin(TagRows::kRows), std::end(TagRows::kRows));
        const auto next = [&](uint8_t TagRow::*place) {
            return static_cast<uint8_t>(std::ranges::max(rows, {}, place).*place + 1);
        };
        rows.push_back({kNewTag, TagKind::Text, TagRows::kBoth, "newtag", next(&TagRow::keywordPlace),
                        next(&TagRow::writtenPlace), kNewChunk, TagForm::Text});
        return rows;
    }();
    return s_rows;
}

namespace {

TEST(NewTag, OfOneRowIsReadCopiedAndWritten) {
    TagList tags;
    ChunksToTags(tags, {{kNewChunk, "Blue \x80\0"s}});
    const RefPtr<IAC3Metadata> read = NewMetadata();
    TagsToMetadata(tags, *read);
    const RefPtr<IAC3Metadata> copy = NewMetadata();
    copy->CopyFrom(read.Get());
    MetadataToTags(tags, *copy, ZeroNumbers::Drop);
    InfoChunks chunks;
    TagsToChunks(tags, chunks);
    EXPECT_EQ(chunks, (InfoChunks{{kNewChunk, "Blue \x80\0"s}}));
    EXPECT_EQ(FindTagByKeyword("NewTag"), FindTagById(kNewTag));
    EXPECT_EQ(FindTagShownAt(FindTagById(kNewTag)->keywordPlace), FindTagById(kNewTag));
}

}  // namespace
