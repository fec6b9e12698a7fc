#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/attributes/CAttributeContainerV2.h"

namespace {

struct Row {
    uint32_t id;
    uint32_t type;
    bool operator==(const Row&) const = default;
};

std::vector<Row> RowsOf(IAttributeContainer64& store) {
    std::vector<Row> rows(store.GetAttributeCount());
    for (uint32_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(store.GetAttributeByIndex(i, &rows[i].id, &rows[i].type), RESULT_OK);
    return rows;
}

class Store : public testing::Test {
protected:
    // The text of an attribute, its buffer given back.
    std::u16string Text(uint32_t id) {
        char16_t* text = nullptr;
        EXPECT_EQ(m_store.GetString(id, &text), RESULT_OK);
        std::u16string copy = text ? text : u"(none)";
        m_store.Free(text);
        return copy;
    }
    std::vector<uint32_t> Longs(uint32_t id) {
        uint32_t* values = nullptr;
        uint32_t count = 99;
        EXPECT_EQ(m_store.GetLongArray(id, &values, &count), RESULT_OK);
        std::vector<uint32_t> copy(values, values ? values + count : nullptr);
        m_store.Free(values);
        return copy;
    }

    CAttributeContainerV2 m_store;
};

TEST_F(Store, EnumeratesInTheOrderOfUnsignedIds) {
    m_store.SetLong(3, 30);
    m_store.SetBool(0x80000001, 1);
    m_store.SetString(1, u"one");
    m_store.SetLong64(2, 20);
    EXPECT_EQ(
        RowsOf(m_store),
        (std::vector<Row>{{1, STORE_STRING}, {2, STORE_LONG64}, {3, STORE_LONG}, {0x80000001, STORE_BOOL}}));
    uint32_t id = 7;
    EXPECT_EQ(m_store.GetAttributeByIndex(4, &id, &id), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetAttributeByIndex(0, nullptr, &id), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetAttributeByIndex(0, &id, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(id, 7u);
}

TEST_F(Store, KeepsEachTypeAndCountsItsStores) {
    const uint32_t longs[] = {1, 0xFFFFFFFF};
    const uint64_t wides[] = {0xFFFFFFFF00000001, 2, 3};
    void* const pointers[] = {&m_store, nullptr};
    const uint8_t bytes[] = {9, 0, 8};
    for (uint32_t round = 1; round <= 2; ++round) {
        m_store.SetLong(1, round);
        m_store.SetBool(2, static_cast<uint8_t>(2 * round));
        m_store.SetLongArray(3, longs, round);
        m_store.SetString(4, round == 1 ? u"a longer text" : u"text");
        m_store.SetData(5, bytes, 4 - round);
        m_store.SetLong64(6, wides[0] + round);
        m_store.SetLong64Array(7, wides, 1 + round);
        m_store.SetPointer(8, &m_store);
        m_store.SetPointerArray(9, pointers, round);
        for (uint32_t id = 1; id <= 9; ++id) EXPECT_EQ(m_store.GetChangeCount(id), round) << id;
    }
    EXPECT_EQ(m_store.GetAttributeCount(), 9u);
    EXPECT_EQ(m_store.GetLong(1), 2u);
    EXPECT_TRUE(m_store.GetBool(2));
    EXPECT_EQ(Longs(3), std::vector<uint32_t>(longs, longs + 2));
    EXPECT_EQ(Text(4), u"text");
    EXPECT_EQ(m_store.GetLong64(6), 0xFFFFFFFF00000003);

    uint8_t* block = nullptr;
    uint64_t* wide = nullptr;
    void** array = nullptr;
    void* pointer = nullptr;
    uint32_t count = 0;
    ASSERT_EQ(m_store.GetData(5, &block, &count), RESULT_OK);
    EXPECT_EQ(std::vector<uint8_t>(block, block + count), std::vector<uint8_t>(bytes, bytes + 2));
    ASSERT_EQ(m_store.GetLong64Array(7, &wide, &count), RESULT_OK);
    EXPECT_EQ(std::vector<uint64_t>(wide, wide + count), std::vector<uint64_t>(wides, wides + 3));
    ASSERT_EQ(m_store.GetPointerArray(9, &array, &count), RESULT_OK);
    EXPECT_EQ(std::vector<void*>(array, array + count), std::vector<void*>(pointers, pointers + 2));
    EXPECT_EQ(m_store.GetPointer(8, &pointer), RESULT_OK);
    EXPECT_EQ(pointer, &m_store);
    for (void* given : {static_cast<void*>(block), static_cast<void*>(wide), static_cast<void*>(array)})
        m_store.Free(given);

    EXPECT_EQ(m_store.SetChangeCount(4, 77), 2u);
    EXPECT_EQ(m_store.GetChangeCount(4), 77u);
    EXPECT_EQ(m_store.SetChangeCount(99, 1), 0u);
    EXPECT_EQ(m_store.GetChangeCount(99), 0u);
}

// Every setter over every other type: the value and the type stay, and only pointers leave a trace.
TEST_F(Store, ASetterOfAnotherTypeNeverChangesAValue) {
    const uint32_t longs[] = {4, 5};
    const uint64_t wides[] = {6};
    void* const pointers[] = {&m_store};
    const uint8_t bytes[] = {7};
    struct Setter {
        uint32_t type;
        Result onOther;
        uint32_t raises;
        std::function<Result(uint32_t id)> set;
    };
    const Setter setters[] = {
        {STORE_LONG, 0, 0, [&](uint32_t id) { return m_store.SetLong(id, 5); }},
        {STORE_BOOL, 0, 0, [&](uint32_t id) { return m_store.SetBool(id, 1); }},
        {STORE_LONG_ARRAY, 1, 0, [&](uint32_t id) { return m_store.SetLongArray(id, longs, 2); }},
        {STORE_STRING, 1, 0, [&](uint32_t id) { return m_store.SetString(id, u"text"); }},
        {STORE_DATA, 1, 0, [&](uint32_t id) { return m_store.SetData(id, bytes, 1); }},
        {STORE_LONG64, 0, 0, [&](uint32_t id) { return m_store.SetLong64(id, 6); }},
        {STORE_LONG64_ARRAY, 1, 0, [&](uint32_t id) { return m_store.SetLong64Array(id, wides, 1); }},
        {STORE_POINTER, 0, 1, [&](uint32_t id) { return m_store.SetPointer(id, &m_store); }},
        {STORE_POINTER_ARRAY, 1, 0, [&](uint32_t id) { return m_store.SetPointerArray(id, pointers, 1); }},
    };
    for (const Setter& first : setters) {
        for (const Setter& second : setters) {
            SCOPED_TRACE(testing::Message() << second.type << " over " << first.type);
            m_store.Clear();
            ASSERT_EQ(first.set(1), RESULT_OK);
            if (second.type == first.type) continue;
            EXPECT_EQ(second.set(1), second.onOther);
            EXPECT_EQ(m_store.GetChangeCount(1), 1 + second.raises);
            EXPECT_EQ(RowsOf(m_store), (std::vector<Row>{{1, first.type}}));
        }
    }
}

TEST_F(Store, GettersOfAnotherTypeGiveNothing) {
    m_store.SetLong(1, 5);
    m_store.SetString(2, u"text");
    EXPECT_EQ(m_store.GetLong(2), 0u);
    EXPECT_FALSE(m_store.GetBool(1));
    EXPECT_EQ(m_store.GetLong64(1), 0u);

    auto* kept = reinterpret_cast<uint8_t*>(this);
    uint8_t* block = kept;
    auto* longs = reinterpret_cast<uint32_t*>(this);
    auto* wides = reinterpret_cast<uint64_t*>(this);
    auto* array = reinterpret_cast<void**>(this);
    auto* text = reinterpret_cast<char16_t*>(this);
    void* pointer = this;
    uint32_t count = 9;
    EXPECT_EQ(m_store.GetData(1, &block, &count), RESULT_FAILED);
    EXPECT_EQ(m_store.GetLongArray(1, &longs, &count), RESULT_FAILED);
    EXPECT_EQ(m_store.GetLong64Array(1, &wides, &count), RESULT_FAILED);
    EXPECT_EQ(m_store.GetPointerArray(1, &array, &count), RESULT_FAILED);
    EXPECT_EQ(m_store.GetString(1, &text), RESULT_FAILED);
    EXPECT_EQ(m_store.GetPointer(1, &pointer), RESULT_FAILED);
    // A missing attribute.
    EXPECT_EQ(m_store.GetData(9, &block, &count), RESULT_OK);
    EXPECT_EQ(m_store.GetLongArray(9, &longs, &count), RESULT_OK);
    EXPECT_EQ(m_store.GetLong64Array(9, &wides, &count), RESULT_OK);
    EXPECT_EQ(m_store.GetPointerArray(9, &array, &count), RESULT_OK);
    EXPECT_EQ(m_store.GetString(9, &text), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetPointer(9, &pointer), RESULT_BAD_ARGUMENT);
    // None of them wrote.
    EXPECT_EQ(block, kept);
    EXPECT_EQ(static_cast<void*>(longs), this);
    EXPECT_EQ(static_cast<void*>(wides), this);
    EXPECT_EQ(static_cast<void*>(array), this);
    EXPECT_EQ(static_cast<void*>(text), this);
    EXPECT_EQ(pointer, this);
    EXPECT_EQ(count, 9u);
}

TEST_F(Store, EmptyValuesAreListedAndGiveNoBuffer) {
    EXPECT_EQ(m_store.SetString(1, u""), RESULT_OK);
    EXPECT_EQ(m_store.SetString(2, nullptr), RESULT_OK);
    EXPECT_EQ(m_store.SetData(3, nullptr, 0), RESULT_OK);
    EXPECT_EQ(m_store.SetLongArray(4, nullptr, 5), RESULT_OK);
    EXPECT_EQ(m_store.GetAttributeCount(), 4u);
    EXPECT_EQ(Text(1), u"");

    char16_t* text = nullptr;
    EXPECT_EQ(m_store.GetString(2, &text), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(text, nullptr);
    uint8_t* block = nullptr;
    uint32_t size = 9;
    EXPECT_EQ(m_store.GetData(3, &block, &size), RESULT_OK);
    EXPECT_EQ(size, 9u);  // not written
    uint32_t* values = nullptr;
    EXPECT_EQ(m_store.GetLongArray(4, &values, &size), RESULT_OK);
    EXPECT_EQ(size, 0u);  // written
    EXPECT_EQ(values, nullptr);
    EXPECT_EQ(block, nullptr);
}

TEST_F(Store, NullPointersAreBadArguments) {
    uint32_t* values = nullptr;
    uint8_t* block = nullptr;
    uint32_t count = 0;
    m_store.SetString(1, u"text");
    EXPECT_EQ(m_store.GetLongArray(9, nullptr, &count), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetLongArray(9, &values, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetData(9, &block, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetString(1, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetPointer(1, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.SetData(9, nullptr, 1), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetAttributeCount(), 1u);
    EXPECT_EQ(m_store.QueryInterface(&IID_IBase, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.CopyAttribute(0x02000001, nullptr), 0u);
    EXPECT_EQ(m_store.CopyTo(nullptr), RESULT_BAD_ARGUMENT);
}

TEST_F(Store, IdTextsNameTheTypeOfTheNibble) {
    EXPECT_STREQ(m_store.GetAttributeIdText(0x00000001), "0x00000001 (type:BOOL)");
    EXPECT_STREQ(m_store.GetAttributeIdText(0x01000001), "0x01000001 (type:DATA)");
    EXPECT_STREQ(m_store.GetAttributeIdText(0x1290000A), "0x1290000A (type:LONG)");
    EXPECT_STREQ(m_store.GetAttributeIdText(0x03000001), "0x03000001 (type:LONGARRAY)");
    EXPECT_STREQ(m_store.GetAttributeIdText(0x34000004), "0x34000004 (type:STRING)");
    EXPECT_STREQ(m_store.GetAttributeIdText(0x05000001), "0x05000001 (type:UNKNOWN)");
}

TEST_F(Store, CopiesOneAttributeByTheNibbleOfItsId) {
    CAttributeContainerV2 source;
    const uint32_t longs[] = {1, 2, 3};
    const uint8_t bytes[] = {4, 5};
    source.SetBool(0x00000001, 7);
    source.SetData(0x01000001, bytes, 2);
    source.SetLong(0x02000001, 8);
    source.SetLongArray(0x03000001, longs, 3);
    source.SetString(0x04000001, u"track");
    source.SetLong64(0x05000001, 9);
    EXPECT_EQ(m_store.CopyAttribute(0x00000001, &source), 1u);
    EXPECT_EQ(m_store.CopyAttribute(0x01000001, &source), 2u);
    EXPECT_EQ(m_store.CopyAttribute(0x02000001, &source), 4u);
    EXPECT_EQ(m_store.CopyAttribute(0x03000001, &source), 0u);
    EXPECT_EQ(m_store.CopyAttribute(0x04000001, &source), 10u);
    EXPECT_EQ(m_store.CopyAttribute(0x05000001, &source), 0u);
    EXPECT_EQ(RowsOf(m_store), (std::vector<Row>{{0x00000001, STORE_BOOL},
                                                 {0x01000001, STORE_DATA},
                                                 {0x02000001, STORE_LONG},
                                                 {0x03000001, STORE_LONG_ARRAY},
                                                 {0x04000001, STORE_STRING}}));
    EXPECT_TRUE(m_store.GetBool(0x00000001));
    EXPECT_EQ(m_store.GetLong(0x02000001), 8u);
    EXPECT_EQ(Longs(0x03000001), std::vector<uint32_t>(longs, longs + 3));
    EXPECT_EQ(Text(0x04000001), u"track");
}

TEST_F(Store, CopyingWhatTheSourceLacksMakesNumbersAndNothingElse) {
    CAttributeContainerV2 source;
    EXPECT_EQ(m_store.CopyAttribute(0x00000002, &source), 1u);
    EXPECT_EQ(m_store.CopyAttribute(0x01000002, &source), 0u);
    EXPECT_EQ(m_store.CopyAttribute(0x02000002, &source), 4u);
    EXPECT_EQ(m_store.CopyAttribute(0x03000002, &source), 0u);
    EXPECT_EQ(m_store.CopyAttribute(0x04000002, &source), 0u);
    EXPECT_EQ(RowsOf(m_store),
              (std::vector<Row>{
                  {0x00000002, STORE_BOOL}, {0x02000002, STORE_LONG}, {0x03000002, STORE_LONG_ARRAY}}));
}

TEST_F(Store, CopiesAWholeStoreIntoAnEmptyOneOnly) {
    CAttributeContainerV2 target;
    const uint8_t bytes[] = {1, 2};
    m_store.SetString(1, u"text");
    m_store.SetString(1, u"second text");
    m_store.SetString(2, nullptr);
    m_store.SetData(3, bytes, 2);
    m_store.SetLong64(4, 44);
    ASSERT_EQ(m_store.CopyTo(&target), RESULT_OK);
    EXPECT_EQ(RowsOf(target), RowsOf(m_store));
    EXPECT_EQ(target.GetChangeCount(1), 1u);
    EXPECT_EQ(target.GetLong64(4), 44u);
    m_store.Clear();  // the copy has payloads of its own

    std::u16string text = u"old";
    target.GetStringInto(1, text);
    EXPECT_EQ(text, u"second text");
    target.GetStringInto(2, text);
    EXPECT_EQ(text, u"");
    CRawData data(9, false);
    EXPECT_EQ(target.GetDataInto(3, data), 2u);
    EXPECT_EQ(data.GetSize(), 2u);
    EXPECT_EQ(data.GetDataAt(1)[0], 2);
    EXPECT_EQ(target.GetDataInto(1, data), 0u);

    m_store.SetLong(1, 1);
    EXPECT_EQ(m_store.CopyTo(&target), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(target.GetAttributeCount(), 4u);
}

TEST_F(Store, CopiesTextsAndBlocksWhateverTheIdSays) {
    CAttributeContainerV2 source;
    const uint8_t bytes[] = {1, 2, 3};
    source.SetString(1, u"text");
    source.SetData(2, bytes, 3);
    EXPECT_EQ(m_store.CopyStringFrom(1, &source), RESULT_OK);
    EXPECT_EQ(m_store.CopyDataFrom(2, &source), 3u);
    EXPECT_EQ(m_store.CopyStringFrom(9, &source), RESULT_OK);
    EXPECT_EQ(m_store.CopyDataFrom(9, &source), 0u);
    EXPECT_EQ(RowsOf(m_store), (std::vector<Row>{{1, STORE_STRING}, {2, STORE_DATA}}));
}

TEST(StoreCount, TheLastReleaseEndsTheStore) {
    auto* store = new CAttributeContainerV2;
    for (const GUID* iid : {&IID_IBase, &IID_IAttributeContainer64, &IID_IStoreAlias}) {
        void* object = nullptr;
        EXPECT_EQ(store->QueryInterface(iid, &object), RESULT_OK);
        EXPECT_EQ(object, store);
    }
    constexpr GUID kOther = MakeGuid("6A822AF0-8037-4186-9F24-D38A8598EFD9");
    void* object = store;
    EXPECT_EQ(store->QueryInterface(&kOther, &object), RESULT_NOT_FOUND);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(store->Release(), 2u);
    EXPECT_EQ(store->AddRef(), 3u);
    EXPECT_EQ(store->Release(), 2u);
    EXPECT_EQ(store->Release(), 1u);
    EXPECT_EQ(store->Release(), 0u);  // the sanitizers tell if it is not gone, or gone twice
}

}  // namespace
