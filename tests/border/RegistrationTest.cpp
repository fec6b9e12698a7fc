// Registration by the built module's exports, as a suite reads it.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <vector>

#include "platform/com/ClassFactory.h"
#include "platform/com/RefPtr.h"
#include "platform/media/MediaResults.h"
#include "platform/registry/RegistryTransaction.h"
#include "platform/registry/UniqueKey.h"
#include "tests/border/LoadedModule.h"
#include "tests/support/ModuleLog.h"
#include "tests/support/ScopedFile.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kClassKey = R"(TARNOCLSID\{16B5817D-48BF-4498-8D32-5EC4F75B0A3A})";
constexpr const char* kEnumKey = R"(Software\Velto\TARNO\AudioCodec\Enum)";
constexpr const char* kEntryKey = R"(Software\Velto\TARNO\AudioCodec\Enum\16B5817D48BF44988D325EC4F75B0A3A)";

class Registration : public testing::Test {
protected:
    Registration() { setenv("VELTO_REGISTRY", m_folder.Native("registry").c_str(), 1); }
    ~Registration() override { unsetenv("VELTO_REGISTRY"); }

    static UniqueKey Open(HKEY root, const char* path) {
        HKEY key = nullptr;
        RegOpenKeyExA(root, path, 0, KEY_READ, &key);
        return UniqueKey(key);
    }
    // The registered path, empty for none.
    static std::string ClassPath() {
        const UniqueKey key = Open(HKEY_CLASSES_ROOT, kClassKey);
        char path[1024];
        DWORD size = sizeof(path);
        const LONG result = RegQueryValueExA(key.get(), "InProcServer", nullptr, nullptr,
                                             reinterpret_cast<BYTE*>(path), &size);
        return result == 0 ? std::string(path, size) : "";
    }
    // Whether the registry has both entries or none, in one moment.
    static bool IsWhole() {
        RegistryTransaction moment;
        const bool whole = ClassPath().empty() == !Open(HKEY_LOCAL_MACHINE, kEntryKey);
        return moment.End(0) == 0 && whole;
    }
    static int32_t Call(const LoadedModule& module, const char* name) {
        return module.Find<int32_t()>(name)();
    }

    TempFolder m_folder;
};

TEST_F(Registration, HoldsTheWholePathOnceAndGoesWithoutATraceOfTheModule) {
    fs::create_directory(m_folder.Native("\xE5\x90\x8D"));
    const std::string path = fs::canonical(m_folder.Native("\xE5\x90\x8D")).string() + "/module.so";
    fs::create_symlink(VL_MODULE, path);
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.Native(""));
    const LoadedModule module("./\xE5\x90\x8D/module.so");
    fs::current_path(before);

    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Call(module, "DllRegisterServer"), 1);
        EXPECT_EQ(ClassPath(), path);
        const UniqueKey entry = Open(HKEY_LOCAL_MACHINE, kEntryKey);
        ASSERT_TRUE(entry);
        for (const char* value : {"", "InProcServer"})
            EXPECT_EQ(RegQueryValueExA(entry.get(), value, nullptr, nullptr, nullptr, nullptr), 2);
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Call(module, "DllUnregisterServer"), 1);
        EXPECT_FALSE(Open(HKEY_CLASSES_ROOT, kClassKey));
        EXPECT_FALSE(Open(HKEY_LOCAL_MACHINE, kEntryKey));
        EXPECT_TRUE(Open(HKEY_CLASSES_ROOT, "TARNOCLSID"));
        EXPECT_TRUE(Open(HKEY_LOCAL_MACHINE, kEnumKey));
    }
}

TEST_F(Registration, AClassThatTheRegistryKnowsIsMadeByItsModule) {
    RefPtr<IUnknown> object;
    const auto create = [&object] {
        return CoCreateInstance(kTableClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                reinterpret_cast<void**>(object.Put()));
    };
    EXPECT_EQ(create(), REGDB_E_CLASSNOTREG);
    HKEY key = nullptr;
    ASSERT_EQ(
        RegCreateKeyExA(HKEY_CLASSES_ROOT, R"(CLSID\{0A0B0C0D-0001-0002-0304-05060708090A}\InprocServer32)",
                        0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
        0);
    const UniqueKey entry(key);
    EXPECT_EQ(create(), REGDB_E_CLASSNOTREG);
    const std::pair<std::string, HRESULT> rows[] = {
        {m_folder.Native("none"), CO_E_DLLNOTFOUND},
        {VL_MODULE, CO_E_DLLNOTFOUND},  // a module without classes
        {VL_PLAIN_MODULE, S_OK},
        {std::string(VL_PLAIN_MODULE) + '\0', S_OK},
    };
    for (const auto& [path, result] : rows) {
        RegSetValueExA(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(path.data()),
                       static_cast<DWORD>(path.size()));
        EXPECT_EQ(create(), result) << path;
        EXPECT_EQ(static_cast<bool>(object), result == S_OK);
    }
}

TEST_F(Registration, TellsNobodyOfARegistryThatRefuses) {
    const LoadedModule module(VL_MODULE);
    std::ofstream(m_folder.Native("registry")).close();
    fs::permissions(m_folder.Native("registry"), fs::perms::owner_read);
    for (const char* name : {"DllUnregisterServer", "DllRegisterServer", "DllUnregisterServer"})
        EXPECT_EQ(Call(module, name), 1);
    EXPECT_EQ(ClassPath(), "");
}

TEST_F(Registration, WorksInExitHandlersAndOnThreadsThatOutliveStaticObjects) {
    for (const char* when : {"first handler", "last handler", "unloaded", "thread"}) {
        const std::string line = std::string("'" VL_REGISTER_AT_EXIT "' '") + when + "'";
        EXPECT_EQ(std::system(line.c_str()), 0) << when;  // NOLINT(bugprone-command-processor)
        EXPECT_EQ(ClassPath(), fs::canonical(VL_MODULE)) << when;
        fs::remove(m_folder.Native("registry"));
    }
    EXPECT_EQ(std::system("'" VL_REGISTER_AT_EXIT "' image"), 0);  // NOLINT(bugprone-command-processor)
}

TEST_F(Registration, ManyProcessesAtOnceAndThoseThatAreKilledLeaveAWholeRegistry) {
    constexpr size_t kAreKilled = 12, kEnd = 8;
    const LoadedModule module(VL_MODULE);
    std::vector<pid_t> children;
    for (size_t i = 0; i < kEnd + kAreKilled; ++i) {
        children.push_back(fork());
        if (children.back() != 0) continue;
        // A value of the process's own beside the one that all fight for. On a machine that is busy enough
        // the others may hold the registry for longer than anyone waits.
        const auto insist = [](auto call) {
            LONG error = ERROR_BUSY;
            for (int turn = 0; turn < 10 && error == LONG{ERROR_BUSY}; ++turn) error = call();
            return error == 0;
        };
        HKEY key = nullptr;
        const std::string own = "Own\\" + std::to_string(i);
        bool good = insist([&] {
            return RegCreateKeyExA(HKEY_CLASSES_ROOT, own.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                   &key, nullptr);
        });
        do {
            Call(module, "DllRegisterServer");
            Call(module, "DllUnregisterServer");
        } while (i < kAreKilled);
        good = good && insist([&] { return RegSetValueExA(key, "done", 0, REG_SZ, nullptr, 0); });
        std::_Exit(good ? 0 : 1);
    }
    for (size_t i = 0; i < children.size(); ++i) {
        if (i < kAreKilled) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1 + 3 * i));
            kill(children[i], SIGKILL);
        }
        int status = -1;
        waitpid(children[i], &status, 0);
        EXPECT_TRUE(i < kAreKilled || status == 0);
        const std::string path = ClassPath();  // the first to open it may be a reader
        EXPECT_TRUE(path.empty() || path == fs::canonical(VL_MODULE)) << path;
        EXPECT_TRUE(IsWhole());
    }
    EXPECT_EQ(Call(module, "DllRegisterServer"), 1);
    EXPECT_EQ(ClassPath(), fs::canonical(VL_MODULE));
    EXPECT_TRUE(Open(HKEY_LOCAL_MACHINE, kEntryKey));
    for (size_t i = kAreKilled; i < children.size(); ++i) {
        const UniqueKey key = Open(HKEY_CLASSES_ROOT, ("own\\" + std::to_string(i)).c_str());
        EXPECT_EQ(RegQueryValueExA(key.get(), "done", nullptr, nullptr, nullptr, nullptr), 0);
    }
}

}  // namespace
