#include <gtest/gtest.h>

#include <stdexcept>

#include "AudioCodec/shell/object/Border.h"
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
    const auto onThrow = [](bool noMemory) { return noMemory ? RESULT_NO_MEMORY : RESULT_FAILED; };
    EXPECT_EQ(AtBorder(RESULT_CANNOT_OPEN, [] { return RESULT_OK; }), RESULT_OK);
    EXPECT_EQ(AtBorder(RESULT_CANNOT_OPEN, []() -> Result { throw std::bad_alloc(); }), RESULT_CANNOT_OPEN);
    EXPECT_EQ(AtBorder(onThrow, []() -> Result { throw std::bad_alloc(); }), RESULT_NO_MEMORY);
    EXPECT_EQ(AtBorder(onThrow, []() -> Result { throw 1UL; }), RESULT_FAILED);
}

}  // namespace
