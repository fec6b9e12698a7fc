#include "AudioCodec/shell/Registration.h"

#include <gtest/gtest.h>

#include "platform/registry/UniqueKey.h"
#include "tests/support/ScopedFile.h"

namespace {

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
