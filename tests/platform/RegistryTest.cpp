#include "platform/registry/Registry.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/base/LastError.h"
#include "platform/registry/UniqueKey.h"
#include "tests/support/ScopedFile.h"

namespace {

namespace fs = std::filesystem;

class Registry : public testing::Test {
protected:
    Registry() { setenv("VELTO_REGISTRY", m_file.c_str(), 1); }
    ~Registry() override { unsetenv("VELTO_REGISTRY"); }

    UniqueKey Create(HKEY parent, const char* path, DWORD* disposition = nullptr) {
        HKEY key = nullptr;
        m_result = RegCreateKeyExA(parent, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, disposition);
        return UniqueKey(key);
    }
    UniqueKey Open(HKEY parent, const char* path, REGSAM rights = KEY_READ) {
        HKEY key = nullptr;
        m_result = RegOpenKeyExA(parent, path, 0, rights, &key);
        return UniqueKey(key);
    }
    static LONG Set(const UniqueKey& key, const char* name, const std::string& text) {
        return RegSetValueExA(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                              static_cast<DWORD>(text.size()));
    }
    std::string Get(const UniqueKey& key, const char* name) {
        char text[100];
        DWORD size = sizeof(text);
        m_result = RegQueryValueExA(key.get(), name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
        return m_result == 0 ? std::string(text, size) : "none";
    }

    TempFolder m_folder;
    std::string m_file = m_folder.Native("made/on demand/registry.db");
    LONG m_result = -1;
};

TEST_F(Registry, KeysAndValuesComeBackWhateverTheCaseOfTheirNames) {
    DWORD disposition = 0;
    UniqueKey key = Create(HKEY_LOCAL_MACHINE, "Software\\Velto\\caf\xE9", &disposition);
    ASSERT_EQ(m_result, 0);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    EXPECT_EQ(Set(key, "Path", "first"), 0);
    EXPECT_EQ(Set(key, "PATH", std::string("/a\0b", 4)), 0);
    EXPECT_EQ(Set(key, nullptr, ""), 0);
    key = Create(HKEY_LOCAL_MACHINE, "SOFTWARE\\velto\\CAF\xE9", &disposition);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    key = Open(Open(HKEY_LOCAL_MACHINE, "software").get(), "Velto\\Caf\xE9");
    EXPECT_EQ(Get(key, "path"), std::string("/a\0b", 4));
    EXPECT_EQ(Get(key, ""), "");
    EXPECT_EQ(Get(key, "other"), "none");
    EXPECT_EQ(m_result, 2);
    EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "Software"));
    EXPECT_EQ(m_result, 2);
    BYTE small[3] = {};
    DWORD size = sizeof(small);
    DWORD type = 0;
    EXPECT_EQ(RegQueryValueExA(key.get(), "Path", nullptr, &type, small, &size), 234);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(type, REG_SZ);
}

TEST_F(Registry, AKeyGoesWithItsValuesAndAnOpenHandleNeverBecomesAnother) {
    const UniqueKey old = Create(HKEY_CLASSES_ROOT, "a\\b");
    EXPECT_EQ(Set(old, "v", "old"), 0);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "A"), 5);  // it has a key below it
    EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "A\\B"), 0);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "A\\B"), 2);
    const UniqueKey fresh = Create(HKEY_CLASSES_ROOT, "a\\b");
    EXPECT_EQ(Get(fresh, "v"), "none");
    EXPECT_EQ(Set(old, "v", "late"), 1018);
    EXPECT_FALSE(Create(old.get(), "c"));
    EXPECT_EQ(m_result, 1018);
    EXPECT_EQ(Get(fresh, "v"), "none");
}

TEST_F(Registry, ReadersCreateNothing) {
    EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "a"));
    EXPECT_EQ(m_result, 2);
    EXPECT_FALSE(fs::exists(m_folder.Native("made")));
    fs::create_directories(fs::path(m_file).parent_path());
    std::ofstream(m_file).close();  // as a first writer leaves it that was killed at once
    EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "a"));
    EXPECT_EQ(m_result, 2);
    EXPECT_TRUE(Create(HKEY_CLASSES_ROOT, "a"));
}

TEST_F(Registry, RightsThatAreRefusedAndBrokenFilesGiveTheirCodes) {
    const UniqueKey all = Create(HKEY_CLASSES_ROOT, "a");
    const UniqueKey reader = Open(HKEY_CLASSES_ROOT, "a", KEY_READ);
    EXPECT_EQ(Set(reader, "v", "x"), 5);
    EXPECT_EQ(RegDeleteKeyA(reader.get(), "b"), 5);
    EXPECT_EQ(RegSetValueExA(all.get(), "v", 0, REG_SZ + 3, nullptr, 0), 87);
    for (const char* path : {"\\a", "a\\", "a\\\\b"}) {
        EXPECT_FALSE(Create(HKEY_CLASSES_ROOT, path));
        EXPECT_EQ(m_result, 161);
    }
    fs::permissions(m_file, fs::perms::owner_read);
    EXPECT_TRUE(Open(HKEY_CLASSES_ROOT, "a"));
    EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "a", KEY_ALL_ACCESS));
    EXPECT_EQ(m_result, 5);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "a"), 5);

    std::ofstream(m_folder.Native("text")) << std::string(5000, 't');
    setenv("VELTO_REGISTRY", m_folder.Native("text").c_str(), 1);
    EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "a"));
    EXPECT_EQ(m_result, 1015);
    setenv("VELTO_REGISTRY", m_folder.Native("text/registry").c_str(), 1);
    EXPECT_FALSE(Create(HKEY_CLASSES_ROOT, "a"));
    EXPECT_EQ(m_result, 3);
}

TEST_F(Registry, LiesInTheUsersDataFolderWhereNothingElseIsSaid) {
    unsetenv("VELTO_REGISTRY");
    setenv("XDG_DATA_HOME", m_folder.Native("data").c_str(), 1);
    EXPECT_TRUE(Create(HKEY_CLASSES_ROOT, "a"));
    EXPECT_TRUE(fs::exists(m_folder.Native("data/velto/registry.db")));
    unsetenv("XDG_DATA_HOME");
}

}  // namespace
