// The records behind the store: AttributeValue and CRawData.
#include <gtest/gtest.h>

#include <algorithm>

#include "AudioCodec/attributes/AttributeValue.h"
#include "AudioCodec/attributes/CRawData.h"

namespace {

bool OnPage(const CRawData& data) { return reinterpret_cast<uintptr_t>(data.GetDataAt(0)) % 4096 == 0; }

bool AllZero(const CRawData& data) {
    const uint8_t* bytes = data.GetDataAt(0);
    return std::all_of(bytes, bytes + data.GetSize(), [](uint8_t byte) { return byte == 0; });
}

TEST(RawData, LargeOrAskedForBlocksStartOnAPage) {
    for (int i = 0; i < 8; ++i) {  // one could lie on a page by chance
        const CRawData large(61440, false);
        const CRawData asked(1, true);
        EXPECT_TRUE(OnPage(large) && AllZero(large));
        EXPECT_TRUE(OnPage(asked) && AllZero(asked));
        EXPECT_TRUE(AllZero(CRawData(61439, false)));
    }
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
    EXPECT_EQ(data.GetDataAt(9), data.GetDataAt(0) + 9);
    EXPECT_EQ(data.GetDataAt(10), data.GetDataAt(0) + 9);
    EXPECT_EQ(data.GetDataAt(0xFFFFFFFF), data.GetDataAt(0) + 9);
    const CRawData empty(0, false);
    EXPECT_EQ(empty.GetDataAt(5), nullptr);
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

TEST(AttributeValue, SettersOfAnotherTypeOnlyCount) {
    const uint32_t number = 7;
    AttributeValue value(1, STORE_LONG, &number, 0);
    value.SetBool(1);
    value.SetLong64(2);
    value.SetPointer(&value);
    EXPECT_EQ(value.GetChangeCount(), 4u);
    EXPECT_EQ(value.GetLong(), 7u);
    EXPECT_EQ(value.GetString(), nullptr);
    EXPECT_EQ(value.GetStringLength(), 0u);
    EXPECT_EQ(value.GetLongArrayCount(), 0u);
    value.SetLong(8);
    EXPECT_EQ(value.GetLong(), 8u);
    EXPECT_EQ(value.GetChangeCount(), 5u);
}

TEST(AttributeValue, ARecordCanChangeItsTypeAndReleasesByTheOldOne) {
    const uint8_t bytes[] = {1, 2, 3, 4, 5, 6, 7, 8};
    AttributeValue value(1, STORE_DATA, bytes, 8);
    value.Assign(1, STORE_STRING, u"text", 0);
    EXPECT_EQ(value.GetData(), nullptr);
    EXPECT_EQ(value.GetStringLength(), 4u);
    value.Assign(1, STORE_LONG64_ARRAY, bytes, 1);
    EXPECT_EQ(value.GetLong64Array()[0], 0x0807060504030201u);
    EXPECT_EQ(value.GetLongArray(), nullptr);
    value.Assign(1, 10, bytes, 1);
    EXPECT_EQ(value.GetLong64ArrayCount(), 0u);
    EXPECT_EQ(value.GetChangeCount(), 4u);
}

TEST(AttributeValue, ACopyHasThePayloadAndACountOfItsOwn) {
    void* const pointers[] = {nullptr, this};
    AttributeValue value(1, STORE_POINTER_ARRAY, pointers, 2);
    value.SetChangeCount(50);
    const AttributeValue copy(value);
    value.ReleasePayload();
    EXPECT_EQ(value.GetPointerArray(), nullptr);
    ASSERT_EQ(copy.GetPointerArrayCount(), 2u);
    EXPECT_EQ(copy.GetPointerArray()[1], this);
    EXPECT_EQ(copy.GetChangeCount(), 1u);

    const AttributeValue block(2, STORE_DATA, nullptr, 0);
    EXPECT_EQ(AttributeValue(block).GetDataSize(), 0u);
    const uint64_t wide = 1ULL << 40;
    EXPECT_EQ(AttributeValue(AttributeValue(3, STORE_LONG64, &wide, 0)).GetLong64(), wide);
}

}  // namespace
