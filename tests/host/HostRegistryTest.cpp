// The commands that enter the module into the registry, and a program that has nothing but the registry to
// find it by.
#include <sqlite3.h>

#include <chrono>
#include <utility>

#include "tests/host/VlwavTest.h"

namespace {

namespace fs = std::filesystem;

const std::string kModule = fs::path(VLWAV_PATH).parent_path().parent_path() / "lib/VlACWav3.so";

class HostRegistry : public VlwavTest {
protected:
    void SetUp() override {
        VlwavTest::SetUp();
        // The program with the libraries that it is linked to, and no module near.
        fs::create_directory(m_folder / "alone");
        for (const char* library : {"libvlplatform.so.3", "libvlregistry.so", "libvlwav.so.1"})
            fs::copy(fs::path(kModule).parent_path() / library, m_folder / "alone" / library);
        fs::copy(VLWAV_PATH, m_folder / "alone/vlwav");
        WriteWav("a.wav", 2, 44100, 16, 10);
    }
};

TEST_F(HostRegistry, AProgramFindsTheModuleByTheRegistryAloneFromRegisterToUnregister) {
    EXPECT_EQ(Run("alone/vlwav info a.wav").exitCode, 1);
    for (int i = 0; i < 2; ++i) {
        const RunResult entered = Vlwav("register");
        EXPECT_EQ(entered.out, "registered " + fs::canonical(kModule).string() + "\n") << entered.err;
    }
    const RunResult found = Run("alone/vlwav info a.wav --verbose");
    EXPECT_EQ(found.exitCode, 0);
    EXPECT_EQ(found.err, "vlwav: module found by the registry: " + kModule + "\n");
    EXPECT_EQ(Run("alone/vlwav where").out, kModule + "\n");
    EXPECT_EQ(Run("alone/vlwav unregister").exitCode, 0);
    EXPECT_EQ(Run("alone/vlwav where").exitCode, 1);
    EXPECT_EQ(Vlwav("unregister").out, "unregistered\n");
}

TEST_F(HostRegistry, TheModuleThatIsNamedGoesFirstAndARegisteredFileThatIsGoneCountsAsNone) {
    fs::create_symlink(kModule, m_folder / "other.so");
    EXPECT_EQ(Vlwav("register --module other.so").exitCode, 0);
    EXPECT_EQ(Vlwav("where").out, (fs::canonical(m_folder) / "other.so\n").string());
    ExpectEnd(Vlwav("where --verbose --module '" + kModule + "'"), 0, "by --module");
    fs::remove(m_folder / "other.so");
    ExpectEnd(Vlwav("where --verbose"), 0, "beside the program: " + kModule);
}

TEST_F(HostRegistry, SaysWhichRegistryCanNotBeWrittenAndWhy) {
    Vlwav("register");
    fs::permissions(m_folder / ".registry", fs::perms::owner_read);
    WriteBytes("text", std::string(5000, 't'));
    const std::pair<const char*, const char*> rows[] = {
        {"", "/.registry: Permission denied."},
        {"VELTO_REGISTRY=text", "/text: it is no registry of this system."},
        {"VELTO_REGISTRY=a.wav/registry", "/a.wav/registry: Not a directory."},
    };
    for (const auto& [environment, reason] : rows) {
        const RunResult refused = Run(std::string(environment) + " '" VLWAV_PATH "' register");
        ExpectEnd(refused, 1, reason);
        EXPECT_EQ(refused.err.find("vlwav: Registering failed: /"), 0U) << refused.err;
        EXPECT_EQ(refused.out, "");
        ExpectEnd(Run(std::string(environment) + " '" VLWAV_PATH "' unregister"), 1, reason);
    }
}

TEST_F(HostRegistry, WaitsFiveSecondsForAnotherProgramThatHoldsTheRegistryAndNoMore) {
    Vlwav("register");
    sqlite3* holder = nullptr;
    sqlite3_open((m_folder / ".registry").c_str(), &holder);
    ASSERT_EQ(sqlite3_exec(holder, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    const auto start = std::chrono::steady_clock::now();
    ExpectEnd(Vlwav("register"), 1, "/.registry: another program has held it for 5 seconds.");
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(took > std::chrono::milliseconds(4900) && took < std::chrono::seconds(8));
    sqlite3_close(holder);
}

TEST_F(HostRegistry, TheSystemsRegistryIsForAllUsersAndTheirOwnLiesOverIt) {
    fs::create_symlink(kModule, m_folder / "own.so");
    const std::string prefix = "env -u VELTO_REGISTRY XDG_DATA_HOME='" + m_folder.string() +
                               "/data' VELTO_SYSTEM_REGISTRY=system/registry.db ";
    const auto run = [&](const std::string& arguments, const char* more = "") {
        return Run(prefix + more + " '" VLWAV_PATH "' " + arguments);
    };
    // A module that has a layer of its own writes where the program says, too.
    fs::copy(kModule, m_folder / "alone/VlACWav3.so");
    const std::string module = (fs::canonical(m_folder) / "alone/VlACWav3.so\n").string();
    ExpectEnd(run("register --system --module alone/VlACWav3.so", "VELTO_SYSTEM_REGISTRY=alone"), 1,
              "/alone: Permission denied.");
    EXPECT_EQ(run("register --system --module alone/VlACWav3.so").exitCode, 0);
    EXPECT_FALSE(fs::exists(m_folder / "data"));
    EXPECT_EQ(run("where").out, module);
    EXPECT_EQ(run("register --module own.so").exitCode, 0);
    EXPECT_EQ(run("where").out, (fs::canonical(m_folder) / "own.so\n").string());
    ExpectEnd(run("unregister"), 0, "another registry still names " + module);
    EXPECT_EQ(run("where").out, module);
    EXPECT_NE(run("--version").out.find("\nVlACWav3 3.0.0, " + module), std::string::npos);
    EXPECT_EQ(run("unregister --system").err, "");
    EXPECT_EQ(run("where").out, kModule + "\n");  // beside the program
}

TEST_F(HostRegistry, ReadingAFileWhereNothingIsRegisteredLoadsNoDatabase) {
    const RunResult run = Run("LD_DEBUG=files '" VLWAV_PATH "' info a.wav");
    EXPECT_NE(run.err.find("VlACWav3.so"), std::string::npos);
    EXPECT_EQ(run.err.find("sqlite"), std::string::npos);
}

}  // namespace
