// The commands that enter the module into the registry, and a program that has nothing but the registry to
// find it by.

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

TEST_F(HostRegistry, SaysThatTheRegistryCanNotBeWritten) {
    Vlwav("register");
    fs::permissions(m_folder / ".registry", fs::perms::owner_read);
    WriteBytes("text", std::string(5000, 't'));
    for (const char* command :
         {"VELTO_REGISTRY=a.wav/registry '" VLWAV_PATH "' register",
          "VELTO_REGISTRY=text '" VLWAV_PATH "' register", "VELTO_REGISTRY=text '" VLWAV_PATH "' unregister",
          "'" VLWAV_PATH "' unregister"}) {
        const RunResult refused = Run(command);
        ExpectEnd(refused, 1, "registry");
        EXPECT_EQ(refused.out, "");
    }
}

TEST_F(HostRegistry, ReadingAFileWhereNothingIsRegisteredLoadsNoDatabase) {
    const RunResult run = Run("LD_DEBUG=files '" VLWAV_PATH "' info a.wav");
    EXPECT_NE(run.err.find("VlACWav3.so"), std::string::npos);
    EXPECT_EQ(run.err.find("sqlite"), std::string::npos);
}

}  // namespace
