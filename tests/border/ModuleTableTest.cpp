// The table of the process's modules, with the built module and others beside it, each time in a process of
// its own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <thread>

#include "platform/base/UniqueHandle.h"
#include "platform/file/FileMapping.h"
#include "platform/loader/Library.h"
#include "platform/sync/Waitable.h"
#include "tests/support/ModuleLog.h"
#include "tests/support/ScopedFile.h"

namespace {

constexpr size_t kWords = 255;

class ModuleTable : public testing::Test {
protected:
    ModuleTable() {
        setenv("VL_EVENT_LOG", m_folder.Native("log").c_str(), 1);
        setenv("TMPDIR", m_temp.Native("").c_str(), 1);
    }
    ~ModuleTable() override {
        unsetenv("VL_EVENT_LOG");
        unsetenv("TMPDIR");
    }

    // Runs `work` in a process of its own and returns how that ended; 0 is well, by exit.
    static int InProcess(const std::function<bool()>& work) {
        const pid_t child = fork();
        if (child == 0) std::exit(work() ? 0 : 2);
        int status = -1;
        waitpid(child, &status, 0);
        return status;
    }
    // Likewise, where it is to end well.
    static void ExpectWell(const std::function<bool()>& work) { EXPECT_EQ(InProcess(work), 0); }
    template <class Function>
    static auto* Find(HMODULE module, const char* name) {
        return reinterpret_cast<Function*>(GetProcAddress(module, name));
    }
    static HMODULE Load(const char* path) { return LoadLibraryExA(path, nullptr, 0); }
    static bool Enter(HMODULE module, uint64_t place) {
        return Find<bool(uint64_t)>(module, "TableEnter")(place);
    }
    // The table's words, for as long as the process; null without a table.
    static uint64_t* Words() {
        const UniqueHandle mapping(OpenFileMappingA(FILE_MAP_ALL_ACCESS, FALSE, TableMappingName().c_str()));
        return mapping ? static_cast<uint64_t*>(MapViewOfFile(mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, 0))
                       : nullptr;
    }
    std::string TakeLog() const {
        const std::string text = FileContents(m_folder.Native("log"));
        std::filesystem::remove(m_folder.Native("log"));
        return text;
    }

    TempFolder m_folder, m_temp;
};

TEST_F(ModuleTable, IsThereFromBeforeTheAttachToBehindTheDetachAtUnloadAndAtExit) {
    for (const bool unload : {true, false}) {
        ExpectWell([unload] {
            const HMODULE probe = Load(VL_PROBE_MODULE);
            uint64_t* const words = Words();
            if (!probe || !words || Find<HMODULE()>(probe, "ProbeInstance")() != probe) return false;
            words[1] = reinterpret_cast<uintptr_t>(probe);
            words[0] = 1;
            Find<void()>(probe, "ProbeUseObject")();
            return !unload || (FreeLibrary(probe) && !Words());
        });
        EXPECT_EQ(TakeLog(), "built\nobject handle table\nclean-up table\ndestroyed\n") << unload;
    }
}

TEST_F(ModuleTable, AModuleThatGoesAsksThoseThatAreListedAndFollowsTheirChanges) {
    for (const bool unload : {true, false}) {
        ExpectWell([unload] {
            const HMODULE first = Load(VL_FIRST_MODULE);
            const HMODULE second = Load(VL_SECOND_MODULE);
            const HMODULE plain = Load(VL_PLAIN_MODULE);
            if (!first || !second || !plain || Enter(first, 1)) return false;  // no table yet
            const HMODULE module = Load(VL_MODULE);
            if (!module || !Enter(first, 1) || !Enter(plain, 3) || !Enter(second, 5)) return false;
            Words()[4] = 0x1234;  // a module that went without a word
            return !unload || FreeLibrary(module);
        });
        EXPECT_EQ(TakeLog(), "first 0\nsecond 0\nsecond 0\n") << unload;
    }
}

// Whoever loads a module holds the loader's lock while that module waits for the table's.
TEST_F(ModuleTable, AnExitAndAThreadThatLoadsAModuleDoNotWaitForEachOther) {
    ExpectWell([] {
        alarm(60);
        // With what the layer keeps built before it, the thread is joined after the module and before that.
        if (!FreeLibrary(Load(VL_PROBE_MODULE))) return false;
        static std::jthread loader;
        const HMODULE first = Load(VL_FIRST_MODULE);
        if (!Load(VL_MODULE) || !Enter(first, 1) || !Enter(first, 2)) return false;
        *Find<void (*)()>(first, "TableHook") = [] {
            const UniqueHandle lock(CreateMutexA(nullptr, FALSE, ProcessObjectName("~VLMMN_").c_str()));
            std::jthread([&lock] {
                if (WaitForSingleObject(lock.get(), 0) != WAIT_TIMEOUT) std::abort();  // clean-ups hold it
            }).join();
            loader = std::jthread([] { Load(VL_PROBE_MODULE); });
            std::this_thread::sleep_for(std::chrono::milliseconds(50));  // most often it waits by now
        };
        return true;
    });
}

TEST_F(ModuleTable, ALockThatItsOwnerLeftBehindIsGivenBack) {
    ExpectWell([] {
        alarm(20);
        if (!Load(VL_MODULE)) return false;
        const UniqueHandle lock(CreateMutexA(nullptr, FALSE, ProcessObjectName("~VLMMN_").c_str()));
        std::jthread([&] { WaitForSingleObject(lock.get(), INFINITE); }).join();
        if (!Load(VL_PROBE_MODULE)) return false;  // attaches under it
        DWORD taken = WAIT_TIMEOUT;
        std::jthread([&] { taken = WaitForSingleObject(lock.get(), 0); }).join();
        return taken == WAIT_OBJECT_0;
    });
}

TEST_F(ModuleTable, ItsFileLiesInATemporaryFolderOfAnyLength) {
    const std::string folder = m_temp.Native(std::string(200, 'a') + "/" + std::string(200, 'b'));
    std::filesystem::create_directories(folder);
    setenv("TMPDIR", folder.c_str(), 1);
    ExpectWell([] { return Load(VL_MODULE) && Words(); });
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(ModuleTable, ACountThatIsTooLargeEndsWithTheTable) {
    ExpectWell([] {
        const HMODULE first = Load(VL_FIRST_MODULE);
        const HMODULE module = Load(VL_MODULE);
        // What lies after the table has no business there, and after that there is no memory.
        if (!module || !Enter(first, kWords - 1) || !Enter(first, kWords)) return false;
        Words()[0] = ~uint64_t{0};
        return FreeLibrary(module) != FALSE;
    });
    EXPECT_EQ(TakeLog(), "first 0\n");
}

TEST_F(ModuleTable, BeginsEmptyWhateverLiesInTheTemporaryFolderAndASecondModuleKeepsIt) {
    ExpectWell([this] {
        const std::string foreign = m_temp.Native(ProcessObjectName("~VLMFN_"));
        std::ofstream(foreign) << std::string(8 * kWords, '\xFF');
        const HMODULE module = Load(VL_MODULE);
        uint64_t* const words = Words();
        if (!module || !words || std::any_of(words, words + kWords, [](uint64_t word) { return word != 0; }))
            return false;
        words[7] = 77;
        if (!Load(VL_PROBE_MODULE) || words[7] != 77) return false;
        return FreeLibrary(module) && words == std::find(words, words + 1, 0) &&
               FileContents(foreign) == std::string(8 * kWords, '\xFF') && std::filesystem::remove(foreign);
    });
    EXPECT_TRUE(std::filesystem::is_empty(m_temp.Native("")));
}

TEST_F(ModuleTable, AKilledProcessLeavesNothingAndWithoutATemporaryFolderTheModuleWorks) {
    const int killed = InProcess([] { return Load(VL_MODULE) && Words() && std::raise(SIGKILL) == 0; });
    EXPECT_TRUE(WIFSIGNALED(killed) && WTERMSIG(killed) == SIGKILL);
    EXPECT_TRUE(std::filesystem::is_empty(m_temp.Native("")));
    ExpectWell([this] {
        setenv("TMPDIR", m_temp.Native("missing").c_str(), 1);
        const HMODULE probe = Load(VL_PROBE_MODULE);
        if (!probe || Words()) return false;
        Find<void()>(probe, "ProbeUseObject")();
        return FreeLibrary(probe) != FALSE;
    });
    EXPECT_EQ(TakeLog(), "built\nobject handle\ndestroyed\n");
}

}  // namespace
