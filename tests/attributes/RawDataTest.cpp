#include "AudioCodec/attributes/CRawData.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

bool AllZero(const CRawData& data) {
    const uint8_t* bytes = data.GetDataAt(0);
    return std::all_of(bytes, bytes + data.GetSize(), [](uint8_t byte) { return byte == 0; });
}

TEST(RawData, LargeOrAskedForBlocksStartOnAPage) {
    const CRawData blocks[] = {{61440, false}, {70000, false}, {1, true}, {5000, true}};
    for (const CRawData& data : blocks)  // one could lie on a page by chance
        EXPECT_EQ(reinterpret_cast<uintptr_t>(data.GetDataAt(0)) % 4096, 0u) << data.GetSize();
}

TEST(RawData, TheSameSizeAgainWipesTheBlockWhereItLies) {
    for (const uint32_t size : {100u, 70000u}) {
        CRawData data(size, false);
        uint8_t* block = data.GetDataAt(0);
        std::fill_n(block, size, uint8_t{0xAA});
        EXPECT_EQ(data.Allocate(size, false), RESULT_OK);
        EXPECT_EQ(data.GetDataAt(0), block);
        EXPECT_TRUE(AllZero(data));
        EXPECT_EQ(data.Allocate(size + 1, false), RESULT_OK);
        EXPECT_TRUE(AllZero(data));
        EXPECT_EQ(data.GetSize(), size + 1);
    }
}

TEST(RawData, NoOffsetReachesBehindTheBlock) {
    const CRawData data(10, false);
    for (const uint32_t offset : {9u, 10u, 0xFFFFFFFFu})
        EXPECT_EQ(data.GetDataAt(offset), data.GetDataAt(0) + 9);
    EXPECT_EQ(CRawData(0, false).GetDataAt(5), nullptr);
}

TEST(RawData, ASizeThatCannotBeHadLeavesAnEmptyUsableBlock) {
    CRawData data(10, false);
    EXPECT_EQ(data.Allocate(0xFFFFFFFF, false), RESULT_NO_MEMORY);  // no room for the alignment in 32 bits
    EXPECT_EQ(data.GetSize(), 0u);
    EXPECT_EQ(data.GetDataAt(0), nullptr);
    EXPECT_EQ(data.Allocate(0xFFFFF000, false), RESULT_NO_MEMORY);  // 0 minus the slack of the failure above
    EXPECT_EQ(data.Allocate(10, false), RESULT_OK);
    EXPECT_TRUE(AllZero(data));
}

}  // namespace
