#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "tests/shell/SampleObject.h"
#include "tests/support/CountedObject.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/Threads.h"

namespace {

constexpr GUID kOne = MakeGuid("00000000-0000-0000-0000-000000000001");
constexpr GUID kTwo = MakeGuid("00000000-0000-0000-0000-000000000002");

class StoreInterfaces : public testing::Test {
protected:
    IBase* Get(const GUID& iid, uint32_t index) {
        void* object = this;
        const Result result = m_store.GetInterface(&iid, index, &object);
        EXPECT_EQ(result, object ? RESULT_OK : RESULT_NOT_FOUND);
        return static_cast<IBase*>(object);
    }

    CountedObject m_a{kOne};
    CountedObject m_b{kOne};
    CountedObject m_other{kTwo};
    CAttributeContainerV2 m_store;
};

TEST_F(StoreInterfaces, AReferenceIsTakenWhereItIsAskedForAndGoesWithItsHolder) {
    EXPECT_EQ(m_store.AddInterface(&kTwo, &m_a, 0), RESULT_OK);  // nobody asks whether it has the interface
    EXPECT_EQ(m_a.Count(), 1u);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(m_store.AddInterface(&kOne, &m_a, 1), RESULT_OK);
    EXPECT_EQ(m_a.Count(), 3u);
    EXPECT_EQ(m_store.RemoveInterface(&kOne, &m_a), RESULT_OK);
    EXPECT_EQ(m_a.Count(), 2u);
    EXPECT_EQ(Get(kTwo, 0), &m_a);
    EXPECT_EQ(m_a.Count(), 3u);  // the caller's own

    EXPECT_EQ(m_store.AddInterface(&kTwo, &m_a, 1), E_NOINTERFACE);
    EXPECT_EQ(m_store.AddInterface(&kOne, nullptr, 0), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.AddInterface(nullptr, &m_a, 0), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetInterfaceCount(), 2u);
    m_store.Clear();
    EXPECT_EQ(m_a.Count(), 2u);
}

TEST_F(StoreInterfaces, AreFoundByValueAndRemovedInOrderOfAddition) {
    const GUID sameValue = kOne;
    m_store.AddInterface(&kOne, &m_a, 0);
    m_store.AddInterface(&kTwo, &m_other, 1);
    m_store.AddInterface(&kOne, &m_b, 1);
    m_store.AddInterface(&kOne, &m_a, 1);
    EXPECT_EQ(m_store.GetInterfaceCountById(&sameValue), 3u);
    IBase* const order[] = {&m_a, &m_b, &m_a, nullptr};
    for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(Get(sameValue, i), order[i]);
    for (const uint32_t index : {0u, 1u}) {  // the first holds none, the second does
        uint8_t flag = 9;
        EXPECT_EQ(m_store.GetInterfaceFlag(&kOne, index, &flag), RESULT_OK);
        EXPECT_EQ(flag, index);
        EXPECT_EQ(m_store.GetInterfaceFlag(&kTwo, 1, &flag), RESULT_FAILED);
    }

    EXPECT_EQ(m_store.RemoveInterface(&kTwo, &m_a), RESULT_NOT_FOUND);
    EXPECT_EQ(m_store.RemoveInterface(nullptr, &m_a), RESULT_NOT_FOUND);
    EXPECT_EQ(m_store.RemoveInterface(&kOne, &m_a), RESULT_OK);
    EXPECT_EQ(Get(kOne, 0), &m_b);
    EXPECT_EQ(Get(kOne, 1), &m_a);
    EXPECT_EQ(m_store.RemoveInterface(&kOne, nullptr), RESULT_OK);
    EXPECT_EQ(m_store.RemoveInterface(&kOne, nullptr), RESULT_NOT_FOUND);
    EXPECT_EQ(m_store.GetInterfaceCount(), 1u);

    void* object = this;
    EXPECT_EQ(m_store.GetInterface(&kTwo, 0, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetInterface(nullptr, 0, &object), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(m_store.GetInterfaceCountById(nullptr), 0u);
    EXPECT_EQ(m_store.GetInterfaceFlag(&kTwo, 0, nullptr), RESULT_BAD_ARGUMENT);
}

TEST_F(StoreInterfaces, ClearReleasesTheOldestFirstAndLeavesAUsableStore) {
    std::string order;
    m_a.onRelease = [&] { order += 'a'; };
    m_b.onRelease = [&] { order += 'b'; };
    m_other.onRelease = [&] { order += 'o'; };
    m_store.AddInterface(&kOne, &m_b, 1);
    m_store.AddInterface(&kTwo, &m_other, 1);
    m_store.AddInterface(&kOne, &m_a, 1);
    m_store.SetLong(1, 1);
    m_store.Clear();
    EXPECT_EQ(order, "boa");
    EXPECT_EQ(m_store.GetAttributeCount() + m_store.GetInterfaceCount(), 0u);
    EXPECT_EQ(m_store.SetLong(1, 2), RESULT_OK);
    EXPECT_EQ(m_store.GetChangeCount(1), 1u);
}

TEST_F(StoreInterfaces, AnObjectThatGoesMayCallBackIntoTheStore) {
    const auto fill = [&] {
        for (CountedObject* object : {&m_a, &m_b}) m_store.AddInterface(&kOne, object, 1);
        m_store.AddInterface(&kTwo, &m_other, 1);
    };
    fill();
    m_a.onRelease = [&] { m_store.RemoveInterface(&kTwo, nullptr); };
    m_store.RemoveInterface(&kOne, nullptr);
    EXPECT_EQ(m_store.GetInterfaceCount(), 0u);
    fill();
    m_a.onRelease = [&] { m_store.Clear(); };
    m_store.Clear();
    EXPECT_EQ(m_other.Count(), 1u);
    fill();
    m_a.onRelease = [&] {
        m_store.AddInterface(&kOne, &m_a, 0);
    };  // which is not the end of it, but of the call
    EXPECT_EQ(m_store.RemoveInterface(&kOne, nullptr), RESULT_OK);
    EXPECT_EQ(m_store.GetInterfaceCountById(&kOne), 1u);
    EXPECT_EQ(m_b.Count(), 1u);
}

TEST_F(StoreInterfaces, AnObjectThatGoesWithTheStoreMayCallBackToo) {
    IAttributeContainer64* const owners[] = {new SampleObject, new CAttributeContainerV2};
    for (IAttributeContainer64* owner : owners) {
        owner->AddRef();
        m_a.onRelease = [&] {
            owner->AddRef();
            owner->SetLong(2, 2);
            owner->Clear();
            owner->AddInterface(&kOne, &m_b, 1);  // too late: nothing would take it out in order
            owner->Release();
        };
        owner->AddInterface(&kOne, &m_a, 1);
        owner->AddInterface(&kTwo, &m_other, 1);
        EXPECT_EQ(owner->Release(), 0u);
        for (const CountedObject* object : {&m_a, &m_b, &m_other}) EXPECT_EQ(object->Count(), 1u);
    }
}

TEST_F(StoreInterfaces, ACopyTakesReferencesOfItsOwnAndLeavesOutWhoRefuses) {
    CAttributeContainerV2 target;
    for (CountedObject* refuser : {&m_other, &m_a, &m_b}) {
        m_store.AddInterface(&kTwo, &m_other, 0);
        for (CountedObject* object : {&m_a, &m_b}) m_store.AddInterface(&kOne, object, 1);
        refuser->refuses = true;  // which matters to those alone that are to be counted
        EXPECT_EQ(m_store.CopyTo(&target), refuser == &m_b ? E_NOINTERFACE : RESULT_OK);  // the last one's
        EXPECT_EQ(target.GetInterfaceCount(), refuser == &m_other ? 3u : 2u);
        EXPECT_EQ(m_a.Count(), refuser == &m_a ? 2u : 3u);
        EXPECT_EQ(m_other.Count(), 1u);
        EXPECT_EQ(m_store.CopyTo(&target), RESULT_BAD_ARGUMENT);
        refuser->refuses = false;
        target.Clear();
        m_store.Clear();
    }
}

TEST_F(StoreInterfaces, WithoutMemoryNothingIsCountedAndACopyTellsOfIt) {
    const auto add = [&] { return m_store.AddInterface(&kOne, &m_a, 1); };
    const auto check = [&] { EXPECT_EQ(m_a.Count() + m_store.GetInterfaceCount(), 1u); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, add, check), RESULT_OK);
    m_store.SetString(1, u"text");
    CAttributeContainerV2 target;
    const auto copy = [&] { return m_store.CopyTo(&target); };
    EXPECT_EQ(RunWithMoreMemory(RESULT_NO_MEMORY, copy, [&] { target.Clear(); }), RESULT_OK);
    EXPECT_EQ(target.GetAttributeCount() + target.GetInterfaceCount(), 2u);
    EXPECT_EQ(m_a.Count(), 3u);
}

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
            // One way only: two stores that copy from each other at one time may wait for ever.
            source.SetLong(0x02000001, round);
            if (store.CopyAttribute(0x02000001, &source) != 4) ++mixed;
            store.GetAttributeIdText(me);
            const std::vector<uint32_t> numbers(1 + round % 9, me);
            store.SetLongArray(2, numbers.data(), static_cast<uint32_t>(numbers.size()));
            uint32_t* values = nullptr;
            uint32_t count = 0;
            if (store.GetLongArray(2, &values, &count) == RESULT_OK) {
                if (count == 0 || std::count(values, values + count, values[0]) != count) ++mixed;
                store.Free(values);
            }
            uint32_t id = 0, type = 0;
            for (uint32_t i = 0; store.GetAttributeByIndex(i, &id, &type) == RESULT_OK; ++i)
                if (i > 2 + kThreads || id == 0) ++mixed;
            std::u16string whole;
            store.GetStringInto(1, whole);
            if (whole != std::u16string(whole.size(), whole.front())) ++mixed;
        }
    });
    EXPECT_EQ(mixed, 0u);
    EXPECT_EQ(store.GetAttributeCount(), 3 + kThreads);
    EXPECT_EQ(store.GetChangeCount(1), kThreads * kRounds);
    EXPECT_EQ(store.GetInterfaceCount(), 0u);
    EXPECT_EQ(object.Count(), 1u);
    EXPECT_EQ(store.AddRef(), kThreads * kRounds + 1);
}

}  // namespace
