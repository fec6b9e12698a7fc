#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "tests/support/CountedObject.h"

namespace {

constexpr GUID kOne = MakeGuid("00000000-0000-0000-0000-000000000001");
constexpr uint32_t kThreads = 8;
constexpr uint32_t kRounds = 200;

template <class Work>
void InThreads(Work work) {
    std::vector<std::thread> threads;
    for (uint32_t i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
    for (std::thread& thread : threads) thread.join();
}

// One text that all threads rewrite: what is read must be one of those written, never a mix.
TEST(StoreThreads, EightThreadsOnOneStoreReadWholeValues) {
    CAttributeContainerV2 store;
    CountedObject object(kOne);  // counts without a lock: the store's covers it
    std::atomic<uint32_t> mixed = 0;
    InThreads([&](uint32_t me) {
        const std::u16string mine(1 + 40 * me, static_cast<char16_t>(u'a' + me));
        for (uint32_t round = 0; round < kRounds; ++round) {
            store.SetString(1, mine.c_str());
            store.SetLong(0x100 + me, round);
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
        }
    });
    EXPECT_EQ(mixed, 0u);
    EXPECT_EQ(store.GetAttributeCount(), 1 + kThreads);
    EXPECT_EQ(store.GetChangeCount(1), kThreads * kRounds);
    EXPECT_EQ(store.GetInterfaceCount(), 0u);
    EXPECT_EQ(object.Count(), 1u);
    EXPECT_EQ(store.AddRef(), kThreads * kRounds + 1);
}

TEST(StoreThreads, StoresCopyFromOneSourceAndShareTheTextsOfIds) {
    CAttributeContainerV2 source;
    source.SetString(0x04000001, u"track");
    std::atomic<uint32_t> wrong = 0;
    InThreads([&](uint32_t me) {
        CAttributeContainerV2 target;
        for (uint32_t round = 0; round < kRounds; ++round) {
            if (target.CopyAttribute(0x04000001, &source) != 10) ++wrong;
            if (me == 0) source.SetLong(0x02000001, round);
            target.CopyAttribute(0x02000001, &source);
            target.GetAttributeIdText(me);
        }
    });
    EXPECT_EQ(wrong, 0u);
}

// The thread that drops the last reference deletes the store while others may just be leaving it.
TEST(StoreThreads, TheLastOfManyReleasesEndsTheStore) {
    for (uint32_t round = 0; round < 50; ++round) {
        auto* store = new CAttributeContainerV2;
        for (uint32_t i = 0; i < kThreads; ++i) store->AddRef();
        std::atomic<uint32_t> last = 0;
        InThreads([&](uint32_t me) {
            store->SetLong(me, me);
            if (store->Release() == 0) ++last;
        });
        EXPECT_EQ(last, 1u);
    }
}

}  // namespace
