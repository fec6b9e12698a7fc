#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "riff/BlockSource.h"
#include "riff/ChunkWalk.h"

namespace {

// A file in memory that counts how often it is read.
class CountedFile final : public BlockSource {
public:
    explicit CountedFile(std::string bytes) : BlockSource(bytes.size()), m_bytes(std::move(bytes)) {}
    size_t reads = 0;

private:
    size_t ReadAt(uint64_t place, void* buffer, size_t count) override {
        ++reads;
        return place < m_bytes.size() ? m_bytes.copy(static_cast<char*>(buffer), count, place) : 0;
    }
    const std::string m_bytes;
};

std::string ChunkText(std::string_view id, uint32_t size, std::string_view content) {
    std::string text(id);
    for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(size >> shift & 0xFF);
    return text.append(content);
}

TEST(ChunkWalk, AMillionSmallChunksCostOneReadForEachBlock) {
    constexpr size_t kChunks = 1'000'000;
    std::string bytes;
    for (size_t i = 0; i < kChunks; ++i) bytes += ChunkText("abcd", 3, "xyz" + std::string(1, '\0'));
    const size_t size = bytes.size();
    CountedFile file(std::move(bytes));
    ChunkWalk walk(file, ByteOrder::Little, 0);
    size_t found = 0;
    for (; walk.Next(); ++found) {
        char content[3];
        // Every other one is passed over; headers and contents lie across the borders of blocks.
        if (found % 2 == 0) {
            ASSERT_TRUE(walk.Read(content, 3) && std::string_view(content, 3) == "xyz");
        }
        ASSERT_EQ(walk.Current().offset, found * 12);
    }
    EXPECT_EQ(found, kChunks);
    EXPECT_LE(file.reads, size / 65536 + 8);
}

TEST(ChunkWalk, EndsAtSizesThatReachPastTheFileAndTakesACallersSizeInstead) {
    const std::string lying = ChunkText("data", 0xFFFFFFFF, "ab") + ChunkText("tail", 0, "");
    CountedFile file(lying);
    ChunkWalk walk(file, ByteOrder::Little, 0);
    ASSERT_TRUE(walk.Next());
    EXPECT_EQ(walk.Current().End(), 8 + (uint64_t{1} << 32));
    EXPECT_FALSE(walk.Next());
    EXPECT_FALSE(walk.Refused());

    CountedFile again(lying);
    ChunkWalk better(again, ByteOrder::Little, 0);
    ASSERT_TRUE(better.Next());
    better.SetSize(2);
    ASSERT_TRUE(better.Next());
    EXPECT_EQ(better.Current().id, FourCC("tail"));
}

}  // namespace
