#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/base/LastError.h"
#include "platform/base/Utf.h"
#include "platform/loader/Library.h"
#include "platform/loader/ModuleEntry.h"
#include "platform/loader/ModulePath.h"
#include "tests/platform/TempFolder.h"

namespace {

const std::string kWholeLife = "constructed\nattached\ndetached\ndestroyed\n";

class Loader : public testing::Test {
protected:
    Loader() { setenv("VL_EVENT_LOG", m_folder.Native("log").c_str(), 1); }
    ~Loader() override { unsetenv("VL_EVENT_LOG"); }

    static void* Load(const std::string& path) {
        void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        EXPECT_TRUE(module) << dlerror();
        return module;
    }
    std::string Log() const {
        std::ifstream in(m_folder.Native("log"));
        return {std::istreambuf_iterator<char>(in), {}};
    }

    TempFolder m_folder;
};

std::string PathOf(void* module) {
    WCHAR buffer[4096];
    return Utf::ToUtf8({buffer, GetModuleFileNameW(module, buffer, 4096)});
}

TEST_F(Loader, AttachFollowsConstructorsAndDetachPrecedesDestructorsAtExit) {
    const pid_t child = fork();
    if (child == 0) {
        dlopen(VL_ENTRY_MODULE, RTLD_NOW | RTLD_LOCAL);
        std::exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Log(), kWholeLife);
}

TEST_F(Loader, ThePathIsWholeAlsoWhenTheModuleWasLoadedByARelativeOne) {
    namespace fs = std::filesystem;
    // By a link of another name, in a folder reached through a link: the folder is made real, the name stays.
    fs::create_directory(m_folder.Native("real"));
    fs::create_symlink(VL_ENTRY_MODULE, m_folder.Native("real/caf\xE9.so"));
    fs::create_symlink("real", m_folder.Native("linked"));
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.Native(""));
    void* const module = Load("linked/caf\xE9.so");
    fs::current_path(before);
    ASSERT_TRUE(module);
    EXPECT_EQ(PathOf(module), fs::canonical(m_folder.Native("real")).string() + "/caf\xE9.so");

    WCHAR small[5] = {u'?', u'?', u'?', u'?', u'?'};
    EXPECT_EQ(GetModuleFileNameW(module, small, 4), 4u);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(small[3], 0);
    EXPECT_EQ(small[4], u'?');

    char bytes[4096];
    EXPECT_EQ(std::string(bytes, GetModuleFileNameA(module, bytes, sizeof(bytes))),
              fs::canonical(m_folder.Native("real")).string() + "/caf\xE9.so");

    dlclose(module);
    EXPECT_EQ(PathOf(module), "");
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(Loader, AModuleIsAskedForItsOwnFunctionsAloneAndGoesWithItsLastLoading) {
    const HMODULE module = LoadLibraryExA(VL_ENTRY_MODULE, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    ASSERT_TRUE(module);
    const auto instance = reinterpret_cast<HMODULE (*)()>(GetProcAddress(module, "InstanceOfEntryModule"));
    ASSERT_TRUE(instance);
    EXPECT_EQ(instance(), module);
    EXPECT_EQ(GetProcAddress(module, "SetLastError"), nullptr);  // of the library that it uses
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    EXPECT_EQ(Load(VL_ENTRY_MODULE), module);  // one handle for all who load it
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Log(), "constructed\nattached\n");
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Log(), kWholeLife);
    // What a handle was, or never was.
    for (const HMODULE none : {module, HMODULE{this}, HMODULE{}}) {
        EXPECT_EQ(GetProcAddress(none, "InstanceOfEntryModule"), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
        EXPECT_FALSE(FreeLibrary(none));
    }
    EXPECT_EQ(LoadLibraryExA(m_folder.Native("none").c_str(), nullptr, 0), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

}  // namespace
