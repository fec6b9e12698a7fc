// What a child of the process finds of the layer and the module: fork takes one thread along, whatever the
// others held in that moment.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "AudioCodec/wave/IAC3StreamReader.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/FileMapping.h"
#include "platform/sync/ForkPass.h"
#include "platform/sync/Waitable.h"
#include "tests/border/LoadedModule.h"
#include "tests/support/ModuleLog.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

constexpr size_t kFrames = 3000;
constexpr int kForks = 60;
constexpr size_t kLong = 300000;  // frames, more than a graph decodes ahead

// The exit code of a child that runs `work`, which is to return 0; -1 if it hangs or dies. It leaves by
// _exit, or, where the end of the process is to be tried too, by exit.
template <class Work>
int InChild(Work work, bool wholeEnd = false) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);  // a hang, however busy the machine is
        const int code = work();
        if (wholeEnd) std::exit(code);
        _exit(code);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class Fork : public testing::Test {
protected:
    static constexpr uint32_t kRate = 48000;

    Fork() {
        const Samples noise = Noise(kFrames * 2);
        m_direct.Write(WavImage().Fmt(1, 2, kRate, 16).Data(noise).Image());
        m_decoded.Write(Deep(kFrames).Image());
        m_long.Write(Deep(kLong).Image());
    }

    static WavImage Deep(size_t frames) {
        return WavImage().Fmt(1, 2, kRate, 24).Chunk("data", std::string(frames * 6, 7));
    }
    RefPtr<IAC3StreamReader> Open(const ScopedFile& file) const {
        const RefPtr<IPrivateCodecMain3> codec = m_module.CreateCodec();
        RefPtr<IAC3StreamReader> reader;
        if (!codec || codec->CreateStreamReader(reader.Put()) != RESULT_OK) return {};
        if (reader->Open(file.Wide().c_str(), OPEN_READ_ONLY) != RESULT_OK) return {};
        return reader->SetOutputFormat(1, 8000, 2) == RESULT_OK ? reader : RefPtr<IAC3StreamReader>();
    }
    // The frames that come of a file; 0 where anything fails.
    uint32_t ReadAll(const ScopedFile& file) const {
        const RefPtr<IAC3StreamReader> reader = Open(file);
        if (!reader) return 0;
        uint32_t all = 0;
        Samples block(1000);
        for (uint32_t frames = 1; frames != 0; all += frames)
            if (reader->Read(block.data(), 1000, &frames, nullptr) != RESULT_OK) return 0;
        return reader->Close() == RESULT_OK ? all : 0;
    }
    bool ReadsBoth() const { return ReadAll(m_direct) == kFrames / 6 && ReadAll(m_decoded) == kFrames / 6; }

    ScopedFile m_direct, m_decoded, m_long;
    LoadedModule m_module{VL_MODULE};
};

TEST_F(Fork, AChildReadsWhateverOthersOfTheParentWereInTheMidstOf) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's own allocator stays locked in a child";
#endif
    std::atomic<bool> stop = false;
    std::atomic<uint32_t> failed = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            while (!stop)
                if (!ReadsBoth()) ++failed;
        });
    }
    int good = 0;
    for (int i = 0; i < kForks; ++i) {
        RefPtr<IAC3StreamReader> running = Open(m_long);
        ASSERT_TRUE(running);
        int16_t sample = 0;
        uint32_t frames = 0;
        ASSERT_EQ(running->Read(&sample, 1, &frames, nullptr), RESULT_OK);  // its thread runs
        good += InChild([&] {
                    if (!ReadsBoth()) return 1;
                    if (running->Read(&sample, 1, &frames, nullptr) == RESULT_OK) return 2;
                    if (running->Seek(ORIGIN_START, 0, nullptr) == RESULT_OK) return 3;
                    if (i % 2 != 0 && running->Close() != RESULT_OK) return 4;
                    running.Reset();
                    return 0;
                }) == 0;
    }
    stop = true;
    threads.clear();
    EXPECT_EQ(good, kForks);
    EXPECT_EQ(failed, 0U);
}

TEST_F(Fork, AReaderOfTheParentOpensAnewInTheChild) {
    const RefPtr<IAC3StreamReader> reader = Open(m_long);
    ASSERT_TRUE(reader);
    int16_t frame[2] = {};  // a new open begins with two channels
    uint32_t frames = 0;
    ASSERT_EQ(reader->Read(frame, 1, &frames, nullptr), RESULT_OK);
#ifdef __SANITIZE_ADDRESS__
    // Until the decoder waits for room: the sanitizer's own allocator would stay locked in a child.
    std::this_thread::sleep_for(std::chrono::seconds(1));
#endif
    EXPECT_EQ(InChild([&] {
                  if (reader->Open(m_decoded.Wide().c_str(), OPEN_READ_ONLY) != RESULT_OK) return 1;
                  return reader->Read(frame, 1, &frames, nullptr) == RESULT_OK && frames == 1 ? 0 : 2;
              }),
              0);
    EXPECT_EQ(reader->Read(frame, 1, &frames, nullptr), RESULT_OK);
}

// The table of this process, for as long as the process; null without one.
uint64_t* Words() {
    const UniqueHandle mapping(OpenFileMappingA(FILE_MAP_ALL_ACCESS, FALSE, TableMappingName().c_str()));
    return mapping ? static_cast<uint64_t*>(MapViewOfFile(mapping.get(), FILE_MAP_ALL_ACCESS, 0, 0, 0))
                   : nullptr;
}

TEST_F(Fork, AChildHasAModuleTableOfItsOwnWithWhatTheParentsHeld) {
    uint64_t* const words = Words();
    ASSERT_TRUE(words);
    words[0] = 1;
    words[1] = 0x1234;  // no module, which is passed over
    // Whoever has the parent's lock will never give it back in the child.
    const UniqueHandle lock(CreateMutexA(nullptr, FALSE, ProcessObjectName("~VLMMN_").c_str()));
    std::atomic<int> step = 0;
    std::jthread owner([&] {
        WaitForSingleObject(lock.get(), INFINITE);
        step = 1;
        step.notify_all();
        step.wait(1);
        ReleaseMutex(lock.get());
    });
    step.wait(0);
    const auto look = [&] {
        if (!m_module.CreateCodec()) return 1;
        uint64_t* const own = Words();
        if (!own || own == words || own[0] != 1 || own[1] != 0x1234) return 2;
        own[1] = 0x5678;
        return 0;
    };
    EXPECT_EQ(InChild(look, true), 0);
    EXPECT_EQ(InChild([] { return 0; }, true), 0);  // its end alone
    EXPECT_EQ(words[1], 0x1234U);
    step = 2;
    step.notify_all();
    owner.join();
    words[0] = 0;
}

TEST(ForkPass, AForkWaitsForOthersThatHaveOneButNotForItself) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kWhile(200);
    std::atomic<bool> inside = false;
    std::jthread other([&] {
        const ForkPass pass;
        const ForkPass again;
        inside = true;
        inside.notify_all();
        std::this_thread::sleep_for(kWhile);
    });
    inside.wait(false);
    auto start = Clock::now();
    const auto enter = [] {
        const ForkPass pass;
        return 0;
    };
    EXPECT_EQ(InChild(enter), 0);
    EXPECT_GE(Clock::now() - start, kWhile / 2);
    other.join();
    start = Clock::now();
    {
        const ForkPass own;
        EXPECT_EQ(InChild(enter), 0);
    }
    EXPECT_EQ(InChild(enter), 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
}

}  // namespace
