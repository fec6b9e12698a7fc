#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <csignal>
#include <fstream>

#include "platform/base/LastError.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"
#include "tests/platform/SystemFaults.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/Threads.h"

namespace {

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
