// The module in places that its makers didn't choose: behind a link, twice in one process, in a folder that
// goes away, without its layer. The program links none of ours, as a host.
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <mutex>
#include <thread>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "platform/base/HandleObject.h"
#include "platform/file/FileMapping.h"
#include "platform/image/Image.h"
#include "platform/registry/RegistryTransaction.h"
#include "platform/sync/Waitable.h"
#include "tests/border/LoadedModule.h"
#include "tests/support/ModuleLog.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/Threads.h"
#include "tests/support/WavImage.h"

namespace {

namespace fs = std::filesystem;

const fs::path kLibraries = fs::path(VL_MODULE).parent_path();

class ModuleCopies : public testing::Test {
protected:
    // A whole copy of what ships.
    fs::path Copy(const std::string& name) const {
        const fs::path folder = m_folder.Native(name);
        fs::create_directories(folder / "Filters");
        for (const char* file : {"VlACWav3.so", VL_LAYER_FILE, "libvlimage.so", "libvlmedia.so",
                                 "libvlregistry.so", "Filters/VlDSAudioStreamReader.ax"})
            fs::copy_file(kLibraries / file, folder / file);
        return folder;
    }
    // Each in a process of its own: what is loaded once stays there.
    static void ExpectWell(const std::function<void()>& work) {
        const pid_t child = fork();
        if (child == 0) {
            work();
            _exit(HasFailure() ? 1 : 0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    // All that comes from files beside the module: decoding, pictures, the registry.
    void ExpectAllWorks(const LoadedModule& module, const fs::path& folder) const {
        const auto codec = module.CreateCodec();
        RefPtr<IAC3StreamReader> reader;
        ASSERT_EQ(codec->CreateStreamReader(reader.Put()), RESULT_OK);
        for (const uint16_t bits : {uint16_t{24}, uint16_t{16}}) {  // 24: by the graph
            const ScopedFile file(WavImage().Fmt(1, 1, 8000, bits).Chunk("data", "123456").Image());
            EXPECT_EQ(reader->Open(file.Wide().c_str(), 0), RESULT_OK) << bits;
        }
        RefPtr<IAC3Metadata> metadata;
        ASSERT_EQ(reader->GetMetadata(metadata.Put()), RESULT_OK);
        const ScopedFile picture(std::vector<uint8_t>{1}, ".bmp");
        EXPECT_EQ(metadata->SetPictureFromFile(picture.Wide().c_str(), 3), RESULT_OK);
        CImage* image = nullptr;
        int32_t id = 3;
        EXPECT_EQ(metadata->GetPictureImage(&image, id, nullptr), RESULT_OK);
        EXPECT_TRUE(IsMapped((folder / "libvlimage.so").string()));
        delete image;
        setenv("VELTO_REGISTRY", m_folder.Native("registry").c_str(), 1);
        module.Find<int32_t()>("DllRegisterServer")();
        EXPECT_TRUE(fs::remove(m_folder.Native("registry")));
    }

    TempFolder m_folder;
};

TEST_F(ModuleCopies, BehindALinkWorksWithWhatLiesBesideItsFile) {
    ExpectWell([this] {
        fs::create_symlink(Copy("real") / "VlACWav3.so", m_folder.Native("link.so"));
        const LoadedModule module(m_folder.Native("link.so").c_str());
        ExpectAllWorks(module, m_folder.Path() / "real");
    });
}

TEST_F(ModuleCopies, ASecondOneHasItsOwnLayerAndOutlivesTheFolderOfTheFirst) {
    ExpectWell([this] {
        const LoadedModule first((Copy("first") / "VlACWav3.so").c_str());
        const LoadedModule second((Copy("second") / "VlACWav3.so").c_str());
        fs::remove_all(m_folder.Path() / "first");
        ExpectAllWorks(second, m_folder.Path() / "second");
        const std::unique_ptr<CImage> image(second.Find<CImage*()>("VlCreateImage")());
        EXPECT_TRUE(image->Create(1, 1, 24, 0));
        EXPECT_EQ(image->Save(m_folder.Wide("out.bmp").c_str(), nullptr), 0);
    });
}

// Wherever it is asked for, under one name there is one object; it stays when the layer's copy that made it
// is given up, and the copies go when nobody is left.
TEST_F(ModuleCopies, MeetEachOthersNamedObjects) {
    ExpectWell([this] {
        auto first = std::make_unique<LoadedModule>((Copy("first") / "VlACWav3.so").c_str());
        auto second = std::make_unique<LoadedModule>((Copy("second") / "VlACWav3.so").c_str());
        const auto create = [](const LoadedModule& module) {
            return module.Find<decltype(CreateMutexA)>("VlCreateMutexA")(nullptr, TRUE, "name");
        };
        const auto wait = second->Find<decltype(WaitForSingleObject)>("VlWaitForSingleObject");
        const HANDLE made = create(*second);
        EXPECT_EQ(create(*first), made);
        EXPECT_TRUE(second->Find<decltype(OpenFileMappingA)>("VlOpenFileMappingA")(
            FILE_MAP_ALL_ACCESS, FALSE, TableMappingName().c_str()));
        first.reset();
        EXPECT_TRUE(IsMapped("/first/lib"));
        const auto waitElsewhere = [&] {
            DWORD result = WAIT_FAILED;
            std::thread([&] { result = wait(made, 0); }).join();
            return result;
        };
        EXPECT_EQ(waitElsewhere(), WAIT_TIMEOUT);
        EXPECT_TRUE(second->Find<decltype(ReleaseMutex)>("VlReleaseMutex")(made));
        EXPECT_EQ(waitElsewhere(), WAIT_OBJECT_0);
        EXPECT_EQ(waitElsewhere(), WAIT_ABANDONED);
        second.reset();
        EXPECT_FALSE(IsMapped("libvlplatform"));
    });
}

// Copies that come and go on threads of their own: under one name they all wait for one another.
class ModuleCopiesThreads : public ModuleCopies {};

TEST_F(ModuleCopiesThreads, ThatComeAndGoOnThreadsKeepOutOneAnother) {
    ExpectWell([this] {
        constexpr uint32_t kCopies = 3, kRounds = 8;
        std::vector<std::string> paths;
        for (uint32_t i = 0; i < kCopies; ++i)
            paths.push_back((Copy("copy" + std::to_string(i)) / "VlACWav3.so").string());
        uint32_t counter = 0;  // not atomic
        std::mutex loading;    // as the loader's own, which ThreadSanitizer doesn't see
        const auto load = [&](const std::string& path) {
            const std::lock_guard lock(loading);
            return std::make_unique<LoadedModule>(path.c_str());
        };
        InThreads(2 * kCopies, [&](uint32_t number) {
            for (uint32_t round = 0; round < kRounds; ++round) {
                auto module = load(paths[number % kCopies]);
                const HANDLE mutex =
                    module->Find<decltype(CreateMutexA)>("VlCreateMutexA")(nullptr, FALSE, "shared");
                ASSERT_EQ(
                    module->Find<decltype(WaitForSingleObject)>("VlWaitForSingleObject")(mutex, INFINITE),
                    WAIT_OBJECT_0);
                EXPECT_TRUE(module->CreateCodec());
                ++counter;
                EXPECT_TRUE(module->Find<decltype(ReleaseMutex)>("VlReleaseMutex")(mutex));
                EXPECT_TRUE(module->Find<decltype(CloseHandle)>("VlCloseHandle")(mutex));
                const std::lock_guard lock(loading);
                module.reset();
            }
        });
        EXPECT_EQ(counter, 2 * kCopies * kRounds);
        EXPECT_FALSE(IsMapped("libvlplatform"));
    });
}

TEST_F(ModuleCopies, ShareTheTransactionOfAThread) {
    ExpectWell([this] {
        const LoadedModule first((Copy("first") / "VlACWav3.so").c_str());
        const LoadedModule second((Copy("second") / "VlACWav3.so").c_str());
        setenv("VELTO_REGISTRY", m_folder.Native("user").c_str(), 1);
        const auto change = [&](const std::string& system) {
            setenv("VELTO_SYSTEM_REGISTRY", m_folder.Native(system).c_str(), 1);
            first.Find<decltype(VlBeginRegistryTransaction)>("VlBeginRegistryTransaction")(
                VL_REGISTRY_SYSTEM);
            second.Find<int32_t()>("DllRegisterServer")();
            return first.Find<decltype(VlEndRegistryTransaction)>("VlEndRegistryTransaction")(0);
        };
        EXPECT_EQ(change("system"), 0);
        EXPECT_TRUE(fs::exists(m_folder.Native("system")));
        EXPECT_EQ(change("system/below"), 3);
        EXPECT_FALSE(fs::exists(m_folder.Native("user")));
    });
}

TEST_F(ModuleCopies, OneWithoutItsLayerGivesNoObject) {
    ExpectWell([this] {
        fs::copy_file(VL_MODULE, m_folder.Path() / "VlACWav3.so");
        const LoadedModule module(m_folder.Native("VlACWav3.so").c_str());
        void* object = this;
        EXPECT_EQ(module.Create(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, &object), RESULT_FAILED);
        EXPECT_EQ(object, nullptr);
    });
}

}  // namespace
