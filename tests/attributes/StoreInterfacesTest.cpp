#include <gtest/gtest.h>

#include <string>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "tests/support/CountedObject.h"

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

TEST_F(StoreInterfaces, ABorrowedObjectIsCountedForTheCallerAlone) {
    EXPECT_EQ(m_store.AddInterface(&kTwo, &m_a, 0),
              RESULT_OK);  // nobody asks it whether it has the interface
    EXPECT_EQ(m_a.Count(), 1u);
    EXPECT_EQ(Get(kTwo, 0), &m_a);
    EXPECT_EQ(m_a.Count(), 2u);
    m_store.Clear();
    EXPECT_EQ(m_a.Count(), 2u);
}

TEST_F(StoreInterfaces, ACountedObjectIsReleasedWithItsHolder) {
    EXPECT_EQ(m_store.AddInterface(&kOne, &m_a, 1), RESULT_OK);
    EXPECT_EQ(m_store.AddInterface(&kOne, &m_a, 1), RESULT_OK);  // twice is allowed
    EXPECT_EQ(m_a.Count(), 3u);
    EXPECT_EQ(m_store.RemoveInterface(&kOne, &m_a), RESULT_OK);
    EXPECT_EQ(m_a.Count(), 2u);
    EXPECT_EQ(m_store.GetInterfaceCount(), 1u);
}

TEST_F(StoreInterfaces, ARefusalIsHandedOnAndLeavesNoHolder) {
    EXPECT_EQ(m_store.AddInterface(&kTwo, &m_a, 1), E_NOINTERFACE);
    EXPECT_EQ(m_store.AddInterface(&kOne, nullptr, 0), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.AddInterface(nullptr, &m_a, 0), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetInterfaceCount(), 0u);
    EXPECT_EQ(m_a.Count(), 1u);
}

TEST_F(StoreInterfaces, IndexesCountTheMatchesInOrderOfAddition) {
    const GUID sameValue = kOne;
    m_store.AddInterface(&kOne, &m_a, 0);
    m_store.AddInterface(&kTwo, &m_other, 1);
    m_store.AddInterface(&kOne, &m_b, 1);
    EXPECT_EQ(m_store.GetInterfaceCount(), 3u);
    EXPECT_EQ(m_store.GetInterfaceCountById(&sameValue), 2u);
    EXPECT_EQ(Get(sameValue, 0), &m_a);
    EXPECT_EQ(Get(sameValue, 1), &m_b);
    EXPECT_EQ(Get(sameValue, 2), nullptr);
    uint8_t flag = 9;
    EXPECT_EQ(m_store.GetInterfaceFlag(&kOne, 0, &flag), RESULT_OK);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(m_store.GetInterfaceFlag(&kOne, 1, &flag), RESULT_OK);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(m_store.GetInterfaceFlag(&kTwo, 1, &flag), RESULT_FAILED);

    EXPECT_EQ(m_store.RemoveInterface(&kOne, &m_a), RESULT_OK);
    EXPECT_EQ(Get(kOne, 0), &m_b);
}

TEST_F(StoreInterfaces, RemovalTakesAllOfAnIdentifierOrTheFirstOfAnObject) {
    for (CountedObject* object : {&m_a, &m_b, &m_a}) m_store.AddInterface(&kOne, object, 1);
    m_store.AddInterface(&kTwo, &m_other, 1);
    EXPECT_EQ(m_store.RemoveInterface(&kTwo, &m_a), RESULT_NOT_FOUND);
    EXPECT_EQ(m_store.RemoveInterface(nullptr, &m_a), RESULT_NOT_FOUND);
    EXPECT_EQ(m_store.RemoveInterface(&kOne, &m_a), RESULT_OK);
    EXPECT_EQ(Get(kOne, 0), &m_b);
    EXPECT_EQ(m_store.RemoveInterface(&kOne, nullptr), RESULT_OK);
    EXPECT_EQ(m_store.RemoveInterface(&kOne, nullptr), RESULT_NOT_FOUND);
    EXPECT_EQ(m_store.GetInterfaceCount(), 1u);
    EXPECT_EQ(m_a.Count(), 1u);
    EXPECT_EQ(m_b.Count(), 2u);  // Get's
}

TEST_F(StoreInterfaces, NullIdentifiersAndReceiversFindNothing) {
    m_store.AddInterface(&kOne, &m_a, 0);
    void* object = this;
    EXPECT_EQ(m_store.GetInterface(&kOne, 0, nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(m_store.GetInterface(nullptr, 0, &object), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(m_store.GetInterfaceCountById(nullptr), 0u);
    EXPECT_EQ(m_store.GetInterfaceFlag(&kOne, 0, nullptr), RESULT_BAD_ARGUMENT);
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
    m_store.AddInterface(&kOne, &m_a, 1);
    m_store.AddInterface(&kTwo, &m_other, 1);
    m_a.onRelease = [&] { m_store.RemoveInterface(&kTwo, nullptr); };
    m_store.RemoveInterface(&kOne, nullptr);
    EXPECT_EQ(m_store.GetInterfaceCount(), 0u);

    m_store.AddInterface(&kOne, &m_a, 1);
    m_store.AddInterface(&kTwo, &m_other, 1);
    m_a.onRelease = [&] { m_store.Clear(); };
    m_store.Clear();
    EXPECT_EQ(m_other.Count(), 1u);
}

TEST_F(StoreInterfaces, AnObjectThatHangsItselfUpAgainEndsNoLoop) {
    m_store.AddInterface(&kOne, &m_a, 1);
    m_store.AddInterface(&kOne, &m_b, 1);
    m_a.onRelease = [&] { m_store.AddInterface(&kOne, &m_a, 0); };
    EXPECT_EQ(m_store.RemoveInterface(&kOne, nullptr), RESULT_OK);
    EXPECT_EQ(m_store.GetInterfaceCountById(&kOne), 1u);
    EXPECT_EQ(m_b.Count(), 1u);
}

TEST_F(StoreInterfaces, ACopyLeavesOutWhoRefusesAndGoesOn) {
    m_store.AddInterface(&kOne, &m_a, 1);
    m_store.AddInterface(&kOne, &m_b, 1);
    CAttributeContainerV2 target;
    m_a.refuses = true;
    EXPECT_EQ(m_store.CopyTo(&target), RESULT_OK);
    EXPECT_EQ(target.GetInterfaceCount(), 1u);
    target.Clear();
    m_a.refuses = false;
    m_b.refuses = true;
    EXPECT_EQ(m_store.CopyTo(&target), E_NOINTERFACE);  // of the last holder
    EXPECT_EQ(target.GetInterfaceCount(), 1u);
}

TEST_F(StoreInterfaces, ACopyTakesReferencesOfItsOwn) {
    CAttributeContainerV2 target;
    m_store.AddInterface(&kOne, &m_a, 1);
    m_store.AddInterface(&kOne, &m_b, 0);
    EXPECT_EQ(m_store.CopyTo(&target), RESULT_OK);
    EXPECT_EQ(m_a.Count(), 3u);
    EXPECT_EQ(m_b.Count(), 1u);
    EXPECT_EQ(target.GetInterfaceCountById(&kOne), 2u);
    CAttributeContainerV2 second;
    second.AddInterface(&kOne, &m_a, 0);
    EXPECT_EQ(m_store.CopyTo(&second), RESULT_BAD_ARGUMENT);
}

}  // namespace
