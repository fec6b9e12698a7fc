#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "AudioCodec/attributes/CRawData.h"
#include "tests/support/FailingAllocator.h"

namespace {

struct Row {
    uint32_t id;
    uint32_t type;
    bool operator==(const Row&) const = default;
};
using Rows = std::vector<Row>;

Rows RowsOf(IAttributeContainer64& store) {
    Rows rows(store.GetAttributeCount());
    for (uint32_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(store.GetAttributeByIndex(i, &rows[i].id, &rows[i].type), RESULT_OK);
    return rows;
}

template <class T>
using ArrayGetter = Result (IAttributeContainer64::*)(uint32_t id, T** values, uint32_t* count);

class Store : public testing::Test {
protected:
    // What a getter hands out, its buffer given back.
    std::u16string Text(uint32_t id) {
        char16_t* text = nullptr;
        EXPECT_EQ(m_store.GetString(id, &text), RESULT_OK);
        std::u16string copy = text ? text : u"(none)";
        m_store.Free(text);
        return copy;
    }
    template <class T>
    std::vector<T> Values(ArrayGetter<T> get, uint32_t id) {
        T* values = nullptr;
        uint32_t count = 0;
        EXPECT_EQ((m_store.*get)(id, &values, &count), RESULT_OK);
        std::vector<T> copy(values, values + count);
        m_store.Free(values);
        return copy;
    }
    // Of an attribute of another type, 1, and of one that is missing, 9.
    template <class T>
    void ExpectNothing(ArrayGetter<T> get) {
        T value = {};
        T* values = &value;
        uint32_t count = 9;
        EXPECT_EQ((m_store.*get)(1, &values, &count), RESULT_FAILED);
        EXPECT_EQ((m_store.*get)(9, &values, &count), RESULT_OK);
        EXPECT_TRUE(values == &value && count == 9);
        EXPECT_EQ((m_store.*get)(9, nullptr, &count), RESULT_BAD_ARGUMENT);
        EXPECT_EQ((m_store.*get)(9, &values, nullptr), RESULT_BAD_ARGUMENT);
    }

    const uint32_t m_longs[3] = {1, 0xFFFFFFFF, 3};
    const uint64_t m_wides[3] = {0xFFFFFFFF00000001, 2, 3};
    void* const m_pointers[2] = {this, nullptr};
    const uint8_t m_bytes[3] = {9, 0, 8};

    struct Setter {
        uint32_t type;
        Result onOther;   // over another type
        uint32_t raises;  // the change count then
        std::function<Result(uint32_t id)> set;
    };
    const Setter m_setters[9] = {
        {STORE_LONG, 0, 0, [&](uint32_t id) { return m_store.SetLong(id, 5); }},
        {STORE_BOOL, 0, 0, [&](uint32_t id) { return m_store.SetBool(id, 4); }},
        {STORE_LONG_ARRAY, 1, 0, [&](uint32_t id) { return m_store.SetLongArray(id, m_longs, 2); }},
        {STORE_STRING, 1, 0, [&](uint32_t id) { return m_store.SetString(id, u"text"); }},
        {STORE_DATA, 1, 0, [&](uint32_t id) { return m_store.SetData(id, m_bytes, 2); }},
        {STORE_LONG64, 0, 0, [&](uint32_t id) { return m_store.SetLong64(id, m_wides[0]); }},
        {STORE_LONG64_ARRAY, 1, 0, [&](uint32_t id) { return m_store.SetLong64Array(id, m_wides, 3); }},
        {STORE_POINTER, 0, 1, [&](uint32_t id) { return m_store.SetPointer(id, this); }},
        {STORE_POINTER_ARRAY, 1, 0, [&](uint32_t id) { return m_store.SetPointerArray(id, m_pointers, 2); }},
    };

    CAttributeContainerV2 m_store;
};

TEST_F(Store, EnumeratesInTheOrderOfUnsignedIds) {
    m_store.SetLong(3, 30);
    m_store.SetBool(0x80000001, 1);
    m_store.SetString(1, u"one");
    m_store.SetLong64(2, 20);
    EXPECT_EQ(RowsOf(m_store),
              (Rows{{1, STORE_STRING}, {2, STORE_LONG64}, {3, STORE_LONG}, {0x80000001, STORE_BOOL}}));
    uint32_t id = 7;
    EXPECT_EQ(m_store.GetAttributeByIndex(4, &id, &id), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetAttributeByIndex(0, nullptr, &id), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetAttributeByIndex(0, &id, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(id, 7u);
}

TEST_F(Store, KeepsEachTypeAndCountsItsStores) {
    // Some over an older value, of another size where it has one.
    m_store.SetLong(STORE_LONG, 6);
    m_store.SetLongArray(STORE_LONG_ARRAY, m_longs, 3);
    m_store.SetString(STORE_STRING, u"a longer text");
    m_store.SetData(STORE_DATA, m_bytes, 3);
    for (const Setter& setter : m_setters) EXPECT_EQ(setter.set(setter.type), RESULT_OK);
    EXPECT_EQ(m_store.GetChangeCount(STORE_LONG), 2u);
    EXPECT_EQ(m_store.GetChangeCount(STORE_BOOL), 1u);
    EXPECT_EQ(m_store.GetAttributeCount(), 9u);
    EXPECT_EQ(m_store.GetLong(STORE_LONG), 5u);
    EXPECT_TRUE(m_store.GetBool(STORE_BOOL));
    EXPECT_EQ(m_store.GetLong64(STORE_LONG64), m_wides[0]);
    EXPECT_EQ(Text(STORE_STRING), u"text");
    void* pointer = nullptr;
    EXPECT_EQ(m_store.GetPointer(STORE_POINTER, &pointer), RESULT_OK);
    EXPECT_EQ(pointer, this);
    using Getters = IAttributeContainer64;
    EXPECT_EQ(Values(&Getters::GetLongArray, STORE_LONG_ARRAY), std::vector(m_longs, m_longs + 2));
    EXPECT_EQ(Values(&Getters::GetData, STORE_DATA), std::vector(m_bytes, m_bytes + 2));
    EXPECT_EQ(Values(&Getters::GetLong64Array, STORE_LONG64_ARRAY), std::vector(m_wides, m_wides + 3));
    EXPECT_EQ(Values(&Getters::GetPointerArray, STORE_POINTER_ARRAY),
              std::vector(m_pointers, m_pointers + 2));

    EXPECT_EQ(m_store.SetChangeCount(4, 77), 2u);
    EXPECT_EQ(m_store.GetChangeCount(4), 77u);
    EXPECT_EQ(m_store.SetChangeCount(99, 1), 0u);
    EXPECT_EQ(m_store.GetChangeCount(99), 0u);
}

// The value and the type stay, and only pointers leave a trace.
TEST_F(Store, ASetterOfAnotherTypeNeverChangesAValue) {
    for (const Setter& first : m_setters) {
        for (const Setter& second : m_setters) {
            SCOPED_TRACE(testing::Message() << second.type << " over " << first.type);
            m_store.Clear();
            ASSERT_EQ(first.set(1), RESULT_OK);
            if (second.type == first.type) continue;
            EXPECT_EQ(second.set(1), second.onOther);
            EXPECT_EQ(m_store.GetChangeCount(1), 1 + second.raises);
            EXPECT_EQ(RowsOf(m_store), (Rows{{1, first.type}}));
        }
    }
}

TEST_F(Store, GettersOfAnotherTypeOrOfNothingGiveNothing) {
    m_store.SetLong(1, 5);
    m_store.SetString(2, u"text");
    EXPECT_EQ(m_store.GetLong(2), 0u);
    EXPECT_FALSE(m_store.GetBool(1));
    EXPECT_EQ(m_store.GetLong64(1), 0u);
    using Getters = IAttributeContainer64;
    ExpectNothing(&Getters::GetData);
    ExpectNothing(&Getters::GetLongArray);
    ExpectNothing(&Getters::GetLong64Array);
    ExpectNothing(&Getters::GetPointerArray);
    char16_t none = 0;
    char16_t* text = &none;
    void* pointer = this;
    EXPECT_EQ(m_store.GetString(1, &text), RESULT_FAILED);
    EXPECT_EQ(m_store.GetPointer(1, &pointer), RESULT_FAILED);
    EXPECT_EQ(m_store.GetString(9, &text), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetPointer(9, &pointer), RESULT_BAD_ARGUMENT);
    EXPECT_TRUE(text == &none && pointer == this);
    EXPECT_EQ(m_store.GetString(2, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetPointer(2, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.SetData(9, nullptr, 1), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetAttributeCount(), 2u);
    EXPECT_EQ(m_store.CopyAttribute(0x02000001, nullptr), 0u);
    EXPECT_EQ(m_store.CopyTo(nullptr), RESULT_BAD_ARGUMENT);
}

TEST_F(Store, EmptyValuesAreListedAndGiveNoBuffer) {
    EXPECT_EQ(m_store.SetString(1, u""), RESULT_OK);
    EXPECT_EQ(m_store.SetString(2, nullptr), RESULT_OK);
    EXPECT_EQ(m_store.SetData(3, nullptr, 0), RESULT_OK);
    EXPECT_EQ(m_store.SetLongArray(4, nullptr, 5), RESULT_OK);
    EXPECT_EQ(m_store.GetAttributeCount(), 4u);
    EXPECT_EQ(Text(1), u"");

    char16_t* text = nullptr;
    uint8_t* block = nullptr;
    uint32_t* values = nullptr;
    uint32_t size = 9;
    EXPECT_EQ(m_store.GetString(2, &text), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetData(3, &block, &size), RESULT_OK);
    EXPECT_EQ(size, 9u);  // not written
    EXPECT_EQ(m_store.GetLongArray(4, &values, &size), RESULT_OK);
    EXPECT_EQ(size, 0u);  // written
    EXPECT_TRUE(!text && !block && !values);
}

TEST_F(Store, IdTextsNameTheTypeOfTheNibble) {
    const std::pair<uint32_t, const char*> rows[] = {
        {0x00000001, "0x00000001 (type:BOOL)"},   {0x01000001, "0x01000001 (type:DATA)"},
        {0x1290000A, "0x1290000A (type:LONG)"},   {0x03000001, "0x03000001 (type:LONGARRAY)"},
        {0x34000004, "0x34000004 (type:STRING)"}, {0x05000001, "0x05000001 (type:UNKNOWN)"}};
    for (const auto& [id, text] : rows) EXPECT_STREQ(m_store.GetAttributeIdText(id), text);
}

TEST_F(Store, CopiesOneAttributeByTheNibbleOfItsIdAndMakesNumbersOfNothing) {
    CAttributeContainerV2 source;
    source.SetBool(0x00000001, 7);
    source.SetData(0x01000001, m_bytes, 2);
    source.SetLong(0x02000001, 8);
    source.SetLongArray(0x03000001, m_longs, 3);
    source.SetString(0x04000001, u"track");
    source.SetLong64(0x05000001, 9);
    const struct {
        uint32_t id, copied, ofNone;  // bytes
    } rows[] = {{0x00000001, 1, 1}, {0x01000001, 2, 0},  {0x02000001, 4, 4},
                {0x03000001, 0, 0}, {0x04000001, 10, 0}, {0x05000001, 0, 0}};
    for (const auto& row : rows) {
        EXPECT_EQ(m_store.CopyAttribute(row.id, &source), row.copied) << row.id;
        EXPECT_EQ(m_store.CopyAttribute(row.id + 1, &source), row.ofNone) << row.id;
    }
    EXPECT_EQ(m_store.GetAttributeCount(), 5u + 3u);  // the long arrays are empty, but there
    EXPECT_TRUE(m_store.GetBool(0x00000001));
    EXPECT_EQ(m_store.GetLong(0x02000001), 8u);
    using Getters = IAttributeContainer64;
    EXPECT_EQ(Values(&Getters::GetLongArray, 0x03000001), std::vector(m_longs, m_longs + 3));
    EXPECT_EQ(Values(&Getters::GetData, 0x01000001), std::vector(m_bytes, m_bytes + 2));
    EXPECT_EQ(Text(0x04000001), u"track");
}

TEST_F(Store, ASourceWithoutMemoryIsNotAnEmptyOne) {
    struct NoMemory : CAttributeContainerV2 {
        void* Alloc(uint32_t) override { return nullptr; }
    } source;
    CAttributeContainerV2* const stores[] = {&source, &m_store};
    for (CAttributeContainerV2* store : stores) {
        store->SetLongArray(0x03000001, m_longs, 3);
        store->SetString(0x04000001, u"track");
    }
    for (const uint32_t id : {0x03000001u, 0x04000001u}) EXPECT_EQ(m_store.CopyAttribute(id, &source), 0u);
    EXPECT_EQ(m_store.CopyStringFrom(0x04000001, &source), RESULT_NO_MEMORY);
    EXPECT_EQ(Values(&IAttributeContainer64::GetLongArray, 0x03000001), std::vector(m_longs, m_longs + 3));
    EXPECT_EQ(Text(0x04000001), u"track");
}

TEST_F(Store, CopiesAWholeStoreIntoAnEmptyOneOnly) {
    CAttributeContainerV2 target;
    for (const Setter& setter : m_setters) setter.set(setter.type);
    m_store.SetString(STORE_STRING, u"second text");
    m_store.SetData(20, nullptr, 0);
    ASSERT_EQ(m_store.CopyTo(&target), RESULT_OK);
    EXPECT_EQ(RowsOf(target), RowsOf(m_store));
    EXPECT_EQ(target.GetChangeCount(STORE_STRING), 1u);
    m_store.Clear();  // the copy has payloads of its own

    EXPECT_EQ(target.GetLong64(STORE_LONG64), m_wides[0]);
    std::u16string text;
    target.GetStringInto(STORE_STRING, text);
    EXPECT_EQ(text, u"second text");
    target.GetStringInto(99, text);
    EXPECT_EQ(text, u"");
    CRawData data(9, false);
    EXPECT_EQ(target.GetDataInto(STORE_DATA, data), 2u);
    EXPECT_EQ(data.GetSize(), 2u);
    EXPECT_EQ(data.GetDataAt(0)[0], 9);

    // Texts and blocks also come one by one, whatever the id says.
    for (const uint32_t id : {STORE_STRING, 99u}) EXPECT_EQ(m_store.CopyStringFrom(id, &target), RESULT_OK);
    for (const uint32_t id : {STORE_DATA, 20u}) m_store.CopyDataFrom(id, &target);
    EXPECT_EQ(RowsOf(m_store), (Rows{{STORE_STRING, STORE_STRING}, {STORE_DATA, STORE_DATA}}));
    EXPECT_EQ(m_store.CopyTo(&target), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(target.GetAttributeCount(), 10u);
}

TEST_F(Store, WithoutMemoryASetterLeavesEveryAttributeWhole) {
    uint32_t attributes = 0;
    int failures = 0;
    const auto check = [&] {
        ++failures;
        EXPECT_EQ(RowsOf(m_store).size(), attributes);
    };
    for (const Setter& setter : m_setters) {
        const auto set = [&] { return setter.set(setter.type); };
        EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, set, check), RESULT_OK);
        ++attributes;
        EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, set, check), RESULT_OK);  // over the old value
    }
    EXPECT_GE(failures, 9 * 2 + 5 * 2);  // record and entry of each; payloads, new and again
    {
        const FailingAllocator heap(0);
        EXPECT_EQ(m_store.SetString(STORE_STRING, u"new"), RESULT_NO_MEMORY);
    }
    EXPECT_EQ(Text(STORE_STRING), u"text");
}

TEST_F(Store, AGetterWithoutABufferWritesNothing) {
    class EmptyHanded : public CAttributeContainerV2 {
        void* Alloc(uint32_t /*size*/) override { return nullptr; }
    } store;
    char16_t* text = nullptr;
    uint8_t* block = nullptr;
    uint32_t* values = nullptr;
    uint32_t count = 9;
    store.SetString(1, u"text");
    EXPECT_EQ(store.GetString(1, &text), RESULT_NO_MEMORY);
    store.SetData(2, m_bytes, 1);
    EXPECT_EQ(store.GetData(2, &block, &count), RESULT_NO_MEMORY);
    store.SetLongArray(3, m_longs, 1);
    EXPECT_EQ(store.GetLongArray(3, &values, &count), RESULT_NO_MEMORY);
    EXPECT_TRUE(!text && !block && !values && count == 9);
}

TEST(StoreCount, TheLastReleaseEndsTheStore) {
    auto* store = new CAttributeContainerV2;
    void* object = nullptr;
    for (const GUID* iid : {&IID_IBase, &IID_IAttributeContainer64, &IID_IStoreAlias}) {
        EXPECT_EQ(store->QueryInterface(iid, &object), RESULT_OK);
        EXPECT_EQ(object, store);
    }
    constexpr GUID kOther = MakeGuid("6A822AF0-8037-4186-9F24-D38A8598EFD9");
    EXPECT_EQ(store->QueryInterface(&kOther, &object), RESULT_NOT_FOUND);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(store->QueryInterface(&IID_IBase, nullptr), RESULT_BAD_ARGUMENT);
    // The sanitizers tell if it is not gone at the end, or gone twice.
    for (const uint32_t left : {2u, 1u, 0u}) EXPECT_EQ(store->Release(), left);
}

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
