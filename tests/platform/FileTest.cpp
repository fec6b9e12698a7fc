#include "platform/file/File.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sys/wait.h>
#include <atomic>
#include <barrier>
#include <cerrno>
#include <csignal>
#include <numeric>
#include <random>

#include "platform/base/CodePage1252.h"
#include "platform/base/LastError.h"
#include "platform/base/UniqueHandle.h"
#include "platform/base/Utf.h"
#include "tests/platform/SystemFaults.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/Threads.h"

namespace {

class File : public testing::Test {
protected:
    UniqueHandle Open(const std::string& name, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL) const {
        return TakeFile(CreateFileW(m_folder.Wide(name).c_str(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition, flags,
                                    nullptr));
    }
    std::string Contents(const std::string& name) const { return FileContents(m_folder.Native(name)); }

    TempFolder m_folder;
};

std::string ReadAll(HANDLE file, DWORD size) {
    std::string bytes(size, '?');
    DWORD done = 0;
    EXPECT_TRUE(ReadFile(file, bytes.data(), size, &done, nullptr));
    bytes.resize(done);
    return bytes;
}

TEST_F(File, WhatIsNoFileIsRefusedWithoutWaiting) {
    ASSERT_EQ(mkfifo(m_folder.Native("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(m_folder.Native("folder").c_str(), 0700), 0);
    alarm(20);  // what would wait for the other end dies here
    EXPECT_FALSE(Open("fifo", OPEN_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_FALSE(Open("folder", OPEN_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    alarm(0);
}

TEST_F(File, AnErrorMidwayTellsHowMuchWasWrittenAndThatNothingWasRead) {
    const UniqueHandle file = Open("f", CREATE_NEW);
    DWORD done = 7;
    {
        const WithFaults faults({.longest = 4, .callsUntilError = 2, .error = ENOSPC});
        EXPECT_FALSE(WriteFile(file.get(), "0123456789", 10, &done, nullptr));
    }
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(done, 8u);
    EXPECT_EQ(SetFilePointer(file.get(), 0, nullptr, FILE_CURRENT), 8u);
    EXPECT_EQ(Contents("f"), "01234567");
    SetFilePointer(file.get(), 1, nullptr, FILE_BEGIN);
    {
        const WithFaults faults({.longest = 4, .callsUntilError = 1, .error = EIO});
        EXPECT_FALSE(ReadFile(file.get(), std::string(9, 0).data(), 9, &done, nullptr));
    }
    EXPECT_EQ(GetLastError(), ERROR_IO_DEVICE);
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(ReadAll(file.get(), 10), "1234567");
}

TEST_F(File, InterruptedAndShortCallsAreCompleted) {
    const UniqueHandle file = Open("f", CREATE_NEW);
    std::string bytes(1000, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    const WithFaults faults({.interruptions = 2, .longest = 7});
    DWORD done = 0;
    EXPECT_TRUE(WriteFile(file.get(), bytes.data(), 1000, &done, nullptr));
    EXPECT_EQ(done, 1000u);
    EXPECT_EQ(Contents("f"), bytes);
    SetFilePointer(file.get(), 0, nullptr, FILE_BEGIN);
    EXPECT_EQ(ReadAll(file.get(), 2000), bytes);
    EXPECT_GT(faults.CallsSeen(), 2 * 3 * 1000 / 7);
}

class FileAhead : public testing::Test {
protected:
    UniqueHandle Open(DWORD access, DWORD share) const {
        return TakeFile(CreateFileW(m_target.Wide().c_str(), access, share, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    // How many bytes came as they stand in the file, by blocks, until so many did or it ended.
    size_t ReadFrom(HANDLE file, size_t place, DWORD size, size_t most) const {
        SetFilePointer(file, static_cast<LONG>(place), nullptr, FILE_BEGIN);
        std::string got;
        for (std::string block = "?"; !block.empty() && got.size() < most; got += block)
            block = ReadAll(file, size);
        return got == m_bytes.substr(place, got.size()) ? got.size() : 0;
    }

    static std::string Pattern() {
        std::string bytes(300'001, ' ');
        for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + i / 251);
        return bytes;
    }
    const std::string m_bytes = Pattern();
    const ScopedFile m_target{std::vector<uint8_t>(m_bytes.begin(), m_bytes.end())};
};

TEST_F(FileAhead, SmallBlocksCostFewCallsAndLargeOnesNoByteTwice) {
    const UniqueHandle file = Open(GENERIC_READ, FILE_SHARE_READ);
    for (const DWORD size : {DWORD{1021}, DWORD{4096}, DWORD{32767}}) {
        const WithFaults counted({});
        EXPECT_EQ(ReadFrom(file.get(), 0, size, m_bytes.size() + 1), m_bytes.size());
        EXPECT_LE(counted.CallsSeen(), 12) << size;
    }
    DWORD done = 9;
    EXPECT_EQ(ReadFrom(file.get(), 0, 100, 300), 300u);
    EXPECT_TRUE(ReadFile(file.get(), nullptr, 0, &done, nullptr) && done == 0);
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i) {
        const size_t place = random() % m_bytes.size();
        const size_t most = random() % 3 == 0 ? 90'000 : 2'000;
        const auto size = static_cast<DWORD>(1 + random() % 40'000);
        EXPECT_GE(ReadFrom(file.get(), place, size, most), std::min(most, m_bytes.size() - place));
    }
    const WithFaults counted({});
    EXPECT_EQ(ReadFrom(file.get(), 100, 200'000, 200'000), 200'000u);
    EXPECT_EQ(counted.BytesMoved(), 200'000u);
}

TEST_F(FileAhead, AFailureIsToldOnceWhereItIsMetAndCostsNoByte) {
    const UniqueHandle file = Open(GENERIC_READ, FILE_SHARE_READ);
    for (int calls = 0; calls < 10; ++calls) {
        SetFilePointer(file.get(), 5, nullptr, FILE_BEGIN);
        const WithFaults faults({.longest = 40'000, .callsUntilError = calls, .error = EIO});
        std::string got;
        int failures = 0;
        for (DWORD done = 1; done != 0 && failures < 2;) {
            std::string block(3000, '?');
            const bool good = ReadFile(file.get(), block.data(), 3000, &done, nullptr);
            if (good) got.append(block, 0, done);
            if (!good) done = static_cast<DWORD>(++failures);
        }
        EXPECT_LE(failures, 1);
        EXPECT_TRUE(got == m_bytes.substr(5)) << calls;
    }
}

TEST_F(FileAhead, WhereOthersMayWriteNothingOldIsRead) {
    constexpr DWORD kBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const UniqueHandle file = Open(GENERIC_READ, kBoth);
    EXPECT_EQ(ReadFrom(file.get(), 0, 1000, 3000), 3000u);
    const UniqueHandle other = Open(GENERIC_WRITE, kBoth);
    SetFilePointer(other.get(), 3000, nullptr, FILE_BEGIN);
    EXPECT_TRUE(WriteFile(other.get(), "changed", 7, nullptr, nullptr));
    EXPECT_EQ(ReadAll(file.get(), 7), "changed");
}

TEST_F(File, OneThatGoesWithItsHandleIsNobodyElsesFromTheStart) {
    constexpr DWORD kGone = FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE;
    std::ofstream(m_folder.Native("taken")) << "theirs";
    for (const char* name : {"taken", "free"}) {
        const UniqueHandle file = Open(name, OPEN_ALWAYS, kGone);
        DWORD done = 0;
        ASSERT_TRUE(WriteFile(file.get(), "mine!!", 6, &done, nullptr));
        EXPECT_EQ(Contents("taken"), "theirs");
        EXPECT_FALSE(std::filesystem::exists(m_folder.Native("free")));
    }
    EXPECT_FALSE(Open("taken", OPEN_EXISTING, kGone));
    EXPECT_FALSE(Open("no folder/a", OPEN_ALWAYS, kGone));
}

TEST(Utf, FileNamesSurviveTheWayInAndOutAlsoThoseThatAreNoUtf8) {
    EXPECT_EQ(Utf::FromUtf8("a\xC3\xA9\xE3\x83\xA2\xF0\x9F\x8E\xB5"), u"a\u00E9\u30E2\U0001F3B5");
    for (const std::string bytes : {"a\xC3\xA9\xE3\x83\xA2\xF0\x9F\x8E\xB5", "\xFF", "caf\xE9.wav",
                                    "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE3\x83"})
        EXPECT_EQ(Utf::ToUtf8(Utf::FromUtf8(bytes)), bytes);
    EXPECT_EQ(Utf::ToUtf8(std::u16string{0xD800, u'b', 0xDFFF}),
              "\xEF\xBF\xBD\x62\xEF\xBF\xBD");  // as U+FFFD
}

TEST(CodePage1252, EveryByteMapsAndMapsBack) {
    for (int byte = 0; byte < 256; ++byte) {
        const char narrow = static_cast<char>(byte);
        WCHAR wide = 0;
        char back = 'x';
        ASSERT_EQ(MultiByteToWideChar(CP_ACP, 0, &narrow, 1, &wide, 1), 1);
        ASSERT_EQ(WideCharToMultiByte(CP_ACP, 0, &wide, 1, &back, 1, nullptr, nullptr), 1);
        EXPECT_EQ(back, narrow) << byte << " by " << static_cast<int>(wide);
    }
}

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

struct Way {
    DWORD access, share;
};

std::vector<Way> AllWays() {
    std::vector<Way> ways;
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE, kReadWrite})
        for (DWORD share = 0; share < 4; ++share) ways.push_back({access, share});
    static_assert((FILE_SHARE_READ | FILE_SHARE_WRITE) == 3);
    return ways;
}

// The platform's rule, spelt from the other side: each must share whatever the other does.
bool Agree(const Way& a, const Way& b) {
    const auto shares = [](const Way& one, const Way& other) {
        return (!(other.access & GENERIC_READ) || (one.share & FILE_SHARE_READ)) &&
               (!(other.access & GENERIC_WRITE) || (one.share & FILE_SHARE_WRITE));
    };
    return shares(a, b) && shares(b, a);
}

class ShareMode : public testing::Test {
protected:
    ShareMode() { std::ofstream(m_folder.Native("f")) << "old"; }

    UniqueHandle Open(const Way& way, DWORD disposition = OPEN_EXISTING) const {
        SetLastError(0);
        return TakeFile(
            CreateFileW(m_folder.Wide("f").c_str(), way.access, way.share, nullptr, disposition, 0, nullptr));
    }
    void ExpectAsAgreed(const Way& held) const {
        for (const Way& asked : AllWays()) {
            const UniqueHandle file = Open(asked);
            EXPECT_EQ(GetLastError(), Agree(held, asked) ? 0 : ERROR_SHARING_VIOLATION)
                << std::hex << held.access << "/" << held.share << ", " << asked.access << "/" << asked.share;
        }
    }

    TempFolder m_folder;
};

TEST_F(ShareMode, HoldsBetweenHandlesAndBetweenProcessesUntilOneIsKilled) {
    for (const Way& held : AllWays()) {
        {
            const UniqueHandle first = Open(held);
            ASSERT_TRUE(first);  // so the process before, killed, left nothing behind
            ExpectAsAgreed(held);
        }
        const pid_t other = fork();
        if (other == 0) {
            const UniqueHandle file = Open(held);
            if (file) raise(SIGSTOP);
            _exit(1);
        }
        int status = 0;
        waitpid(other, &status, WUNTRACED);
        EXPECT_TRUE(WIFSTOPPED(status));  // it has the file
        ExpectAsAgreed(held);
        kill(other, SIGKILL);
        waitpid(other, nullptr, 0);
    }
    EXPECT_TRUE(Open({kReadWrite, 0}));
}

TEST_F(ShareMode, AThirdMeetsEveryoneWhoIsStillThereAndEmptiesNothing) {
    UniqueHandle first = Open({GENERIC_READ, FILE_SHARE_READ});
    UniqueHandle second = Open({GENERIC_READ, FILE_SHARE_READ});
    ASSERT_TRUE(first && second);
    first.reset();
    EXPECT_FALSE(Open({kReadWrite, 0}, CREATE_ALWAYS));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(std::filesystem::file_size(m_folder.Native("f")), 3u);
    second.reset();
    EXPECT_TRUE(Open({GENERIC_WRITE, 0}));
}

// Openers that come at one time: one has the file, never two, never none.
class ShareModeThreads : public ShareMode {};

TEST_F(ShareModeThreads, OneOfSeveralRacersWins) {
    constexpr int kThreads = 3, kRounds = 20;
    std::atomic<int> winners = 0;
    std::vector<int> winnersOf;
    const auto endRound = [&]() noexcept { winnersOf.push_back(winners.exchange(0)); };
    std::barrier start(kThreads);
    std::barrier end(kThreads, endRound);
    const auto race = [&](uint32_t) {
        for (int round = 0; round < kRounds; ++round) {
            start.arrive_and_wait();
            const WithFaults slow({.slowLocks = 10});  // all look for the others before any has a lock
            const UniqueHandle file = Open({kReadWrite, 0});
            if (file) ++winners;
            end.arrive_and_wait();  // all have tried; only then the winner lets go
        }
    };
    InThreads(kThreads, race);
    EXPECT_EQ(winnersOf, std::vector<int>(kRounds, 1));
}

}  // namespace
