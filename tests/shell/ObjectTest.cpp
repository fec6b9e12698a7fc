#include <gtest/gtest.h>

#include <stdexcept>

#include "AudioCodec/shell/Registration.h"
#include "AudioCodec/shell/object/Border.h"
#include "platform/base/Types.h"
#include "platform/registry/UniqueKey.h"
#include "tests/shell/SampleObject.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/ScopedFile.h"

namespace {

TEST(CreateObject, GivesTheFirstReferenceOrACode) {
    std::atomic<int> deleted = 0;
    ISample* sample = nullptr;
    EXPECT_EQ((CreateObject<SampleObject, ISample>(nullptr, &deleted)), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(CreateObject<SampleObject>(&sample, &deleted), RESULT_OK);
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

constexpr GUID kZeros = MakeGuid("0A0B0C0D-0001-0002-0304-05060708090A");

TEST(RegistrationKeys, KeepTheLeadingZerosOfTheIdentifierInBothForms) {
    const ScopedFile registry(".db");
    setenv("VELTO_REGISTRY", registry.Path().c_str(), 1);
    EXPECT_FALSE(Registration::RegisterClassPath(kZeros, "", true));
    EXPECT_FALSE(exists(registry.Path()));
    Registration::RegisterCodec(kZeros, "/in");
    EXPECT_TRUE(Registration::RegisterClassPath(kZeros, "/out", false));
    for (const auto& [root, path, value] :
         {std::tuple(HKEY_LOCAL_MACHINE,
                     R"(SOFTWARE\Velto\TARNO\AudioCodec\Enum\0A0B0C0D00010002030405060708090A)", ""),
          {HKEY_CLASSES_ROOT, R"(TARNOCLSID\{0A0B0C0D-0001-0002-0304-05060708090A})", "OutProcServer"}}) {
        HKEY opened = nullptr;
        EXPECT_EQ(RegOpenKeyExA(root, path, 0, KEY_READ, &opened), 0) << path;
        const UniqueKey key(opened);
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueExA(opened, value, nullptr, nullptr, nullptr, &size), *value ? 0 : 2);
        EXPECT_EQ(size, *value ? 4u : 0u);
    }
    EXPECT_TRUE(Registration::UnregisterClassPath(kZeros));
    EXPECT_FALSE(Registration::UnregisterClassPath(kZeros));
    unsetenv("VELTO_REGISTRY");
}

}  // namespace
