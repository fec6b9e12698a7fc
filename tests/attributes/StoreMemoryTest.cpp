// What happens when memory runs out, at every allocation of an operation in turn.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "tests/support/CountedObject.h"
#include "tests/support/FailingAllocator.h"

namespace {

constexpr GUID kOne = MakeGuid("00000000-0000-0000-0000-000000000001");

TEST(StoreMemory, ASetterGivesTwoAndLeavesEveryAttributeWhole) {
    CAttributeContainerV2 store;
    const std::u16string text(100, u'x');
    const uint8_t bytes[100] = {};
    const uint32_t longs[100] = {};
    const uint64_t wides[100] = {};
    void* const pointers[100] = {};
    const std::function<Result()> setters[] = {
        [&] { return store.SetLong(1, 1); },
        [&] { return store.SetBool(2, 1); },
        [&] { return store.SetLongArray(3, longs, 100); },
        [&] { return store.SetString(4, text.c_str()); },
        [&] { return store.SetData(5, bytes, 100); },
        [&] { return store.SetLong64(6, 1); },
        [&] { return store.SetLong64Array(7, wides, 100); },
        [&] { return store.SetPointer(8, &store); },
        [&] { return store.SetPointerArray(9, pointers, 100); },
    };
    uint32_t attributes = 0;
    int failures = 0;
    for (const auto& set : setters) {
        for (const bool overOldOne : {false, true}) {
            EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, set,
                                        [&] {
                                            ++failures;
                                            EXPECT_EQ(store.GetAttributeCount(), attributes);
                                        }),
                      RESULT_OK);
            if (!overOldOne) ++attributes;
            EXPECT_EQ(store.GetAttributeCount(), attributes);
        }
    }
    EXPECT_GE(failures, 9 * 2 + 5 * 2);  // record and entry of each; payloads, new and again
    std::u16string kept;
    store.GetStringInto(4, kept);
    EXPECT_EQ(kept, text);
}

TEST(StoreMemory, AStoreThatFailsKeepsTheOldText) {
    CAttributeContainerV2 store;
    store.SetString(1, u"old");
    {
        const FailingAllocator heap(0);
        EXPECT_EQ(store.SetString(1, u"new"), RESULT_NO_MEMORY);
    }
    std::u16string kept;
    store.GetStringInto(1, kept);
    EXPECT_EQ(kept, u"old");
}

TEST(StoreMemory, AnInterfaceThatCannotBeKeptIsNotCounted) {
    CountedObject object(kOne);
    CAttributeContainerV2 store;
    const auto added = RunWithMoreMemory(
        RESULT_NO_MEMORY, [&] { return store.AddInterface(&kOne, &object, 1); },
        [&] {
            EXPECT_EQ(object.Count(), 1u);
            EXPECT_EQ(store.GetInterfaceCount(), 0u);
        });
    EXPECT_EQ(added, RESULT_OK);
    EXPECT_EQ(object.Count(), 2u);
}

TEST(StoreMemory, CopiesThatFailReportIt) {
    CAttributeContainerV2 source;
    source.SetString(0x04000001, u"track");
    source.SetLong(0x02000001, 5);
    CAttributeContainerV2 target;
    EXPECT_EQ(RunWithMoreMemory(
                  RESULT_NO_MEMORY, [&] { return source.CopyTo(&target); }, [&] { target.Clear(); }),
              RESULT_OK);
    EXPECT_EQ(target.GetAttributeCount(), 2u);
}

// A store whose own allocator has nothing to give.
class EmptyHanded : public CAttributeContainerV2 {
public:
    void* Alloc(uint32_t /*size*/) override { return nullptr; }
};

TEST(StoreMemory, AGetterWithoutABufferGivesTwoAndWritesNothing) {
    EmptyHanded store;
    const uint8_t bytes[] = {1};
    const uint32_t longs[] = {1};
    store.SetString(1, u"text");
    store.SetData(2, bytes, 1);
    store.SetLongArray(3, longs, 1);
    char16_t* text = nullptr;
    uint8_t* block = nullptr;
    uint32_t* values = nullptr;
    uint32_t count = 9;
    EXPECT_EQ(store.GetString(1, &text), RESULT_NO_MEMORY);
    EXPECT_EQ(store.GetData(2, &block, &count), RESULT_NO_MEMORY);
    EXPECT_EQ(store.GetLongArray(3, &values, &count), RESULT_NO_MEMORY);
    EXPECT_TRUE(!text && !block && !values);
    EXPECT_EQ(count, 9u);
}

}  // namespace
