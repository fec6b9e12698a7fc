#include "platform/registry/Registry.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cstdlib>
#include <thread>
#include <tuple>

#include "platform/base/LastError.h"
#include "platform/registry/RegistryTransaction.h"
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
    // Runs statements on a file, as another program would.
    static void Sql(const std::string& file, const char* statements) {
        sqlite3* database = nullptr;
        sqlite3_open(file.c_str(), &database);
        EXPECT_EQ(sqlite3_exec(database, statements, nullptr, nullptr, nullptr), SQLITE_OK) << statements;
        sqlite3_close(database);
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
    setenv("VELTO_REGISTRY", m_folder.Native("text/registry").c_str(), 1);
    EXPECT_FALSE(Create(HKEY_CLASSES_ROOT, "a"));
    EXPECT_EQ(m_result, 3);
}

TEST_F(Registry, LeavesAloneWhatIsNoRegistryOrALaterOne) {
    const std::tuple<const char*, const char*, LONG> rows[] = {
        {"foreign", "CREATE TABLE keys(id); CREATE TABLE entries(id); CREATE TABLE more(id)", 1017},
        {"marked by others", "PRAGMA application_id = 7", 1017},
        {"versioned by others", "PRAGMA user_version = 1", 1017},
        {"later", "PRAGMA application_id = 0x564C5247; PRAGMA user_version = 2", 1306},
        {"text", nullptr, 1017},
    };
    for (const auto& [name, statements, code] : rows) {
        const std::string file = m_folder.Native(name);
        if (statements) Sql(file, statements);
        if (!statements) std::ofstream(file) << std::string(5000, 't');
        const std::string before = FileContents(file);
        setenv("VELTO_REGISTRY", file.c_str(), 1);
        EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "a"));
        EXPECT_EQ(m_result, code) << name;
        EXPECT_FALSE(Create(HKEY_CLASSES_ROOT, "a"));
        EXPECT_EQ(m_result, code) << name;
        EXPECT_TRUE(FileContents(file) == before) << name;
    }
}

TEST_F(Registry, TakesOverOneThatIsKnownByItsTablesAlone) {
    Create(HKEY_CLASSES_ROOT, "a");
    const auto head = [&] { return FileContents(m_file).substr(60, 12); };  // version and mark
    const std::string marked = head();
    Sql(m_file, "PRAGMA application_id = 0; PRAGMA user_version = 0");
    EXPECT_TRUE(Open(HKEY_CLASSES_ROOT, "a"));
    EXPECT_EQ(head(), std::string(12, '\0'));
    EXPECT_TRUE(Create(HKEY_CLASSES_ROOT, "b"));
    EXPECT_EQ(head(), marked);
    EXPECT_TRUE(Open(HKEY_CLASSES_ROOT, "a"));
}

TEST_F(Registry, ATransactionIsKeptWholeOrNotAtAll) {
    const auto change = [&](LONG inner, LONG outer) {
        RegistryTransaction transaction;
        RegistryTransaction within;
        Set(Create(HKEY_CLASSES_ROOT, "a\\b"), "v", "x");
        EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "a"), 5);  // a call that fails takes back itself alone
        EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "none"), 2);
        within.End(inner);
        std::jthread([&] { EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "a")); }).join();
        return transaction.End(outer);
    };
    EXPECT_EQ(change(7, 0), 7);
    EXPECT_EQ(change(0, 8), 8);
    {
        const RegistryTransaction dropped;
        EXPECT_TRUE(Create(HKEY_CLASSES_ROOT, "a"));
    }
    EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "a"));
    EXPECT_EQ(change(0, 0), 0);
    EXPECT_EQ(Get(Open(HKEY_CLASSES_ROOT, "a\\b"), "v"), "x");
}

// The places of all registries, below the test's folder.
class RegistryPlaces : public Registry {
protected:
    RegistryPlaces() {
        unsetenv("VELTO_REGISTRY");
        for (const auto& [variable, value] : m_places) setenv(variable, value.c_str(), 1);
    }
    ~RegistryPlaces() override {
        for (const auto& [variable, value] : m_places) unsetenv(variable);
    }
    // The value of the one key of all tests, as it is seen from outside.
    std::string Seen() { return Get(Open(HKEY_CLASSES_ROOT, "a"), "v"); }
    // Sets it in the user's registry, or the one that the environment calls the system's.
    void Enter(DWORD which, const char* value) {
        RegistryTransaction transaction(which);
        EXPECT_EQ(transaction.End(Set(Create(HKEY_CLASSES_ROOT, "a"), "v", value)), 0);
    }
    static mode_t Mode(const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
    }

    const std::pair<const char*, std::string> m_places[3] = {
        {"XDG_DATA_HOME", m_folder.Native("home/data")},
        {"VELTO_SYSTEM_REGISTRY", m_folder.Native("etc/registry.db")},
        {"XDG_DATA_DIRS", "relative:" + m_folder.Native("none") + ":" + m_folder.Native("share")},
    };
};

TEST_F(RegistryPlaces, TheUsersLiesOverTheSystemsWhichShowThroughWhereItHasNothing) {
    const std::string shared = m_folder.Native("share/velto/registry.db");
    setenv("VELTO_SYSTEM_REGISTRY", shared.c_str(), 1);
    Enter(VL_REGISTRY_SYSTEM, "shared");
    setenv("VELTO_SYSTEM_REGISTRY", m_folder.Native("etc/registry.db").c_str(), 1);
    EXPECT_EQ(Seen(), "shared");
    Enter(VL_REGISTRY_SYSTEM, "system");
    EXPECT_EQ(Seen(), "system");
    EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, "a", KEY_ALL_ACCESS));  // the user has none to change
    EXPECT_FALSE(fs::exists(m_folder.Native("home")));
    Create(HKEY_CLASSES_ROOT, "a");
    EXPECT_EQ(Seen(), "system");  // his key has no such value
    Enter(VL_REGISTRY_USER, "user");
    EXPECT_EQ(Seen(), "user");
    setenv("VELTO_REGISTRY", m_file.c_str(), 1);
    EXPECT_EQ(Seen(), "none");
    unsetenv("VELTO_REGISTRY");
    EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "a"), 0);
    EXPECT_EQ(Seen(), "system");
    std::ofstream(m_folder.Native("home/data/velto/registry.db")) << std::string(5000, 't');
    EXPECT_EQ(Seen(), "none");  // rather than another module than the user's
}

TEST_F(RegistryPlaces, AreMadeForTheUserAloneAndTheSystemsForAllToReadWhateverTheMask) {
    for (const mode_t mask : {0U, 077U, 0777U}) {
        const mode_t before = umask(mask);
        Enter(VL_REGISTRY_USER, "user");
        Enter(VL_REGISTRY_SYSTEM, "system");
        umask(before);
        EXPECT_EQ(Mode(m_folder.Native("home/data")), 0700U);
        EXPECT_EQ(Mode(m_folder.Native("home/data/velto")), 0700U);
        EXPECT_EQ(Mode(m_folder.Native("home/data/velto/registry.db")), 0600U);
        EXPECT_EQ(Mode(m_folder.Native("etc")), 0755U);
        EXPECT_EQ(Mode(m_folder.Native("etc/registry.db")), 0644U);
        fs::remove_all(m_folder.Native("home"));
        fs::remove_all(m_folder.Native("etc"));
    }
}

TEST_F(RegistryPlaces, TheSystemKnowsTheHomeOfAUserWithoutTheVariable) {
    const auto path = [] {
        char text[1000] = "";
        return std::string(text, VlGetRegistryPath(VL_REGISTRY_USER, text, sizeof(text)));
    };
    EXPECT_EQ(path(), m_folder.Native("home/data/velto/registry.db"));
    unsetenv("XDG_DATA_HOME");
    const std::string home = std::getenv("HOME");
    EXPECT_EQ(path(), home + "/.local/share/velto/registry.db");
    unsetenv("HOME");
    EXPECT_EQ(path(), std::string(getpwuid(geteuid())->pw_dir) + "/.local/share/velto/registry.db");
    setenv("HOME", home.c_str(), 1);
}

}  // namespace
