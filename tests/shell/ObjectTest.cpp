#include <gtest/gtest.h>

#include <stdexcept>

#include "AudioCodec/shell/object/Border.h"
#include "platform/base/Types.h"
#include "tests/shell/SampleObject.h"
#include "tests/support/FailingAllocator.h"

namespace {

TEST(CreateObject, GivesTheFirstReferenceOrACode) {
    std::atomic<int> deleted = 0;
    ISample* sample = nullptr;
    EXPECT_EQ((CreateObject<SampleObject, ISample>(nullptr, &deleted)), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(CreateObject<SampleObject>(&sample, &deleted), RESULT_OK);
    EXPECT_EQ(sample->AddRef(), 2u);
    EXPECT_EQ(sample->Release(), 1u);
    void* found = nullptr;
    EXPECT_EQ(sample->QueryInterface(&IID_IStoreAlias, &found), E_NOINTERFACE);  // the store's name, not ours
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
