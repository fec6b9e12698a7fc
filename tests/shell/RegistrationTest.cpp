#include "AudioCodec/shell/Registration.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "platform/registry/UniqueKey.h"
#include "tests/support/ScopedFile.h"

namespace {

constexpr GUID kZeros = MakeGuid("0A0B0C0D-0001-0002-0304-05060708090A");

TEST(RegistrationKeys, KeepTheLeadingZerosOfTheIdentifierInBothForms) {
    const ScopedFile registry(".db");
    setenv("VELTO_REGISTRY", registry.Path().c_str(), 1);
    EXPECT_FALSE(Registration::RegisterClassPath(kZeros, "", true));
    EXPECT_FALSE(std::filesystem::exists(registry.Path()));
    Registration::RegisterCodec(kZeros, "/in");
    EXPECT_TRUE(Registration::RegisterClassPath(kZeros, "/out", false));
    const auto open = [](HKEY root, const char* path) {
        HKEY key = nullptr;
        EXPECT_EQ(RegOpenKeyExA(root, path, 0, KEY_READ, &key), 0) << path;
        return UniqueKey(key);
    };
    EXPECT_TRUE(
        open(HKEY_LOCAL_MACHINE, R"(SOFTWARE\Velto\TARNO\AudioCodec\Enum\0A0B0C0D00010002030405060708090A)"));
    const UniqueKey key = open(HKEY_CLASSES_ROOT, R"(TARNOCLSID\{0A0B0C0D-0001-0002-0304-05060708090A})");
    BYTE path[8];
    DWORD size = sizeof(path);
    EXPECT_EQ(RegQueryValueExA(key.get(), "OutProcServer", nullptr, nullptr, path, &size), 0);
    EXPECT_EQ(size, 4u);
    EXPECT_TRUE(Registration::UnregisterClassPath(kZeros));
    EXPECT_FALSE(Registration::UnregisterClassPath(kZeros));
    unsetenv("VELTO_REGISTRY");
}

}  // namespace
