#include <gtest/gtest.h>

#include <stdexcept>

#include "AudioCodec/shell/Border.h"
#include "platform/base/Types.h"
#include "tests/shell/SampleObject.h"
#include "tests/support/FailingAllocator.h"

namespace {

TEST(Object, LivesByItsCount) {
    std::atomic<int> deleted = 0;
    auto* object = new SampleObject(&deleted);
    EXPECT_EQ(object->AddRef(), 1u);
    EXPECT_EQ(object->AddRef(), 2u);
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(deleted, 0);
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(deleted, 1);
}

TEST(Object, InterfacesAreFoundByValueAndTheRootWithoutARow) {
    auto object = RefPtr<SampleObject>::Retain(new SampleObject);
    const GUID elsewhere = IID_ISample;
    for (const GUID* iid : {&IID_IBase, &IID_IAttributeContainer64, &elsewhere}) {
        RefPtr<IBase> found;
        EXPECT_EQ(object->QueryInterface(iid, reinterpret_cast<void**>(found.Put())), RESULT_OK);
        EXPECT_EQ(found.Get(), object.Get());
        EXPECT_EQ(object->AddRef(), 3u);
        EXPECT_EQ(object->Release(), 2u);
    }
    void* found = &object;
    EXPECT_EQ(object->QueryInterface(&IID_IStoreAlias, &found), E_NOINTERFACE);  // the store's name, not ours
    EXPECT_EQ(found, nullptr);
    found = &object;
    EXPECT_EQ(object->QueryInterface(nullptr, &found), E_POINTER);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(object->QueryInterface(&IID_IBase, nullptr), E_POINTER);
    EXPECT_EQ(object->AddRef(), 2u);
    object->Release();
}

TEST(Object, BuffersGoBackThroughAnyObject) {
    auto object = RefPtr<SampleObject>::Retain(new SampleObject);
    char16_t* text = nullptr;
    ASSERT_EQ(object->GetString(1, &text), RESULT_OK);
    EXPECT_EQ(std::u16string(text), u"preset");
    auto other = RefPtr<SampleObject>::Retain(new SampleObject);
    other->Free(text);
    object->Free(other->Alloc(16));
    object->Free(nullptr);
}

// A forwarder that calls the wrong neighbour shows here; what the operations do is the store's matter.
TEST(Object, ForwardsEveryOperationToItsStore) {
    auto object = RefPtr<SampleObject>::Retain(new SampleObject);
    auto source = RefPtr<SampleObject>::Retain(new SampleObject);
    const uint32_t longs[] = {1, 2};
    const uint64_t wides[] = {3};
    const uint8_t bytes[] = {4, 5, 6};
    void* pointers[] = {&object};
    EXPECT_EQ(object->SetLong(10, 7), RESULT_OK);
    EXPECT_EQ(object->SetBool(11, 1), RESULT_OK);
    EXPECT_EQ(object->SetLongArray(12, longs, 2), RESULT_OK);
    EXPECT_EQ(object->SetString(13, u"text"), RESULT_OK);
    EXPECT_EQ(object->SetData(14, bytes, 3), RESULT_OK);
    EXPECT_EQ(object->SetLong64(15, 8), RESULT_OK);
    EXPECT_EQ(object->SetLong64Array(16, wides, 1), RESULT_OK);
    EXPECT_EQ(object->SetPointer(17, &object), RESULT_OK);
    EXPECT_EQ(object->SetPointerArray(18, pointers, 1), RESULT_OK);
    EXPECT_EQ(object->GetAttributeCount(), 10u);
    for (uint32_t i = 1, id = 0, type = 0; i < 10; ++i) {
        const uint32_t kTypes[] = {
            0,          STORE_LONG,   STORE_BOOL,         STORE_LONG_ARRAY, STORE_STRING,
            STORE_DATA, STORE_LONG64, STORE_LONG64_ARRAY, STORE_POINTER,    STORE_POINTER_ARRAY};
        EXPECT_EQ(object->GetAttributeByIndex(i, &id, &type), RESULT_OK);
        EXPECT_EQ(id, 9 + i);
        EXPECT_EQ(type, kTypes[i]);
    }
    EXPECT_EQ(object->GetLong(10), 7u);
    EXPECT_TRUE(object->GetBool(11));
    EXPECT_EQ(object->GetLong64(15), 8u);
    const auto given = [&](auto get, auto* values, uint32_t expected) {
        uint32_t count = 0;
        EXPECT_EQ((object.Get()->*get.first)(get.second, &values, &count), RESULT_OK);
        EXPECT_EQ(count, expected);
        object->Free(values);
    };
    using Store = IAttributeContainer64;
    given(std::pair(&Store::GetLongArray, 12u), static_cast<uint32_t*>(nullptr), 2);
    given(std::pair(&Store::GetData, 14u), static_cast<uint8_t*>(nullptr), 3);
    given(std::pair(&Store::GetLong64Array, 16u), static_cast<uint64_t*>(nullptr), 1);
    given(std::pair(&Store::GetPointerArray, 18u), static_cast<void**>(nullptr), 1);
    void* pointer = nullptr;
    EXPECT_EQ(object->GetPointer(17, &pointer), RESULT_OK);
    EXPECT_EQ(pointer, &object);

    EXPECT_EQ(object->AddInterface(&IID_ISample, source.Get(), 1), RESULT_OK);
    EXPECT_EQ(object->GetInterfaceCount(), 1u);
    EXPECT_EQ(object->GetInterfaceCountById(&IID_ISample), 1u);
    RefPtr<IBase> held;
    EXPECT_EQ(object->GetInterface(&IID_ISample, 0, reinterpret_cast<void**>(held.Put())), RESULT_OK);
    EXPECT_EQ(held.Get(), source.Get());
    EXPECT_EQ(object->RemoveInterface(&IID_ISample, source.Get()), RESULT_OK);
    EXPECT_STREQ(object->GetAttributeIdText(1), "0x00000001 (type:BOOL)");
    source->SetString(0x04000001, u"copied");
    EXPECT_EQ(object->CopyAttribute(0x04000001, source.Get()), 12u);
    object->Clear();
    EXPECT_EQ(object->GetAttributeCount(), 0u);
}

TEST(CreateObject, GivesTheFirstReferenceOrACode) {
    std::atomic<int> deleted = 0;
    ISample* sample = nullptr;
    EXPECT_EQ((CreateObject<SampleObject, ISample>(nullptr, &deleted)), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(CreateObject<SampleObject>(&sample, &deleted), RESULT_OK);
    EXPECT_EQ(sample->AddRef(), 2u);
    sample->Release();
    EXPECT_EQ(sample->Release(), 0u);
    EXPECT_EQ(deleted, 1);

    sample = nullptr;
    EXPECT_EQ(CreateObject<SampleObject>(
                  &sample, &deleted, +[] { throw 1234UL; }),
              1234);
    EXPECT_EQ(CreateObject<SampleObject>(
                  &sample, &deleted, +[] { throw std::runtime_error("no"); }),
              RESULT_NO_MEMORY);
    EXPECT_EQ(sample, nullptr);
    EXPECT_EQ(deleted, 1);  // what was never built has no destructor run
}

// The lock, the store, the object and its preset text: whichever is missing, there is no object.
TEST(CreateObject, NoMemoryGivesTwoAtEveryAllocation) {
    int failures = 0;
    ISample* sample = nullptr;
    EXPECT_EQ(RunWithMoreMemory(
                  RESULT_NO_MEMORY, [&] { return CreateObject<SampleObject>(&sample); },
                  [&] {
                      ++failures;
                      EXPECT_EQ(sample, nullptr);
                  }),
              RESULT_OK);
    EXPECT_GE(failures, 5);
    sample->Release();
}

TEST(Border, AnyExceptionBecomesTheNamedCode) {
    EXPECT_EQ(AtBorder(RESULT_CANNOT_OPEN, [] { return RESULT_OK; }), RESULT_OK);
    EXPECT_EQ(AtBorder(RESULT_CANNOT_OPEN, []() -> Result { throw 1UL; }), RESULT_CANNOT_OPEN);
    EXPECT_EQ(AtBorder(RESULT_CANNOT_OPEN, []() -> Result { throw std::bad_alloc(); }), RESULT_CANNOT_OPEN);
}

}  // namespace
