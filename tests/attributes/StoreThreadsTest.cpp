#include <gtest/gtest.h>

#include <atomic>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "platform/com/RefPtr.h"
#include "tests/shell/SampleObject.h"
#include "tests/support/CountedObject.h"
#include "tests/support/Threads.h"

namespace {

constexpr GUID kOne = MakeGuid("00000000-0000-0000-0000-000000000001");
constexpr uint32_t kThreads = 8;
constexpr uint32_t kRounds = 200;

// One text that all threads rewrite: what is read must be one of those written, never a mix.
TEST(StoreThreads, EightThreadsOnOneStoreReadWholeValues) {
    CAttributeContainerV2 store, source;
    CountedObject object(kOne);  // counts without a lock: the store's covers it
    std::atomic<uint32_t> mixed = 0;
    InThreads(kThreads, [&](uint32_t me) {
        const std::u16string mine(1 + 40 * me, static_cast<char16_t>(u'a' + me));
        for (uint32_t round = 0; round < kRounds; ++round) {
            store.SetString(1, mine.c_str());
            store.SetLong(0x02000100 + me, round);
            char16_t* text = nullptr;
            if (store.GetString(1, &text) == RESULT_OK) {
                const std::u16string read = text;
                const auto who = static_cast<uint32_t>(read.front() - u'a');
                if (read != std::u16string(1 + 40 * who, read.front())) ++mixed;
                store.Free(text);
            }
            store.AddInterface(&kOne, &object, 1);
            store.RemoveInterface(&kOne, &object);
            store.AddRef();
            store.AddRef();
            store.Release();
            // Each store copies from the other, and the texts of ids are shared.
            source.SetLong(0x02000001, round);
            if (store.CopyAttribute(0x02000001, &source) != 4) ++mixed;
            if (source.CopyAttribute(0x02000100 + me, &store) != 4) ++mixed;
            store.GetAttributeIdText(me);
        }
    });
    EXPECT_EQ(mixed, 0u);
    EXPECT_EQ(store.GetAttributeCount(), 2 + kThreads);
    EXPECT_EQ(store.GetChangeCount(1), kThreads * kRounds);
    EXPECT_EQ(store.GetInterfaceCount(), 0u);
    EXPECT_EQ(object.Count(), 1u);
    EXPECT_EQ(store.AddRef(), kThreads * kRounds + 1);
}

// The thread that drops the last reference deletes the object and its store while others may just be leaving.
TEST(ObjectThreads, ReferencesAreTakenAndDroppedFromAnyThreadAndTheLastOneDeletes) {
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> deleted = 0;
        auto* const object = new SampleObject(&deleted);
        for (uint32_t i = 0; i < kThreads; ++i) object->AddRef();
        InThreads(kThreads, [&](uint32_t me) {
            for (uint32_t k = 0; k < 20; ++k) RefPtr<SampleObject>::Retain(object)->SetLong(me, k);
            object->Release();
        });
        EXPECT_EQ(deleted, 1);
    }
}

}  // namespace
