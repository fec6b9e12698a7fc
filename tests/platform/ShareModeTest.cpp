#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/base/LastError.h"
#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"
#include "tests/platform/TempFolder.h"

namespace {

constexpr DWORD kAccesses[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};
constexpr DWORD kShares[] = {0, FILE_SHARE_READ, FILE_SHARE_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE};

struct Way {
    DWORD access, share;
};

std::vector<Way> AllWays() {
    std::vector<Way> ways;
    for (const DWORD access : kAccesses)
        for (const DWORD share : kShares) ways.push_back({access, share});
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
    void ExpectAsAgreed(const Way& held, const Way& asked) const {
        const UniqueHandle file = Open(asked);
        EXPECT_EQ(file != nullptr, Agree(held, asked))
            << std::hex << held.access << "/" << held.share << " then " << asked.access << "/" << asked.share;
        if (!file) {
            EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        }
    }
    std::string Contents() const {
        std::ifstream in(m_folder.Native("f"));
        return {std::istreambuf_iterator<char>(in), {}};
    }

    TempFolder m_folder;
};

// Another process that holds the file until it is killed.
class Holder {
public:
    template <class Open>
    explicit Holder(Open open) {
        int ends[2];
        if (pipe(ends) != 0) return;
        m_process = fork();
        if (m_process == 0) {
            const UniqueHandle file = open();
            const char answer = file ? 'y' : 'n';
            if (write(ends[1], &answer, 1) != 1) _exit(1);
            for (;;) pause();
        }
        close(ends[1]);
        if (read(ends[0], &m_answer, 1) != 1) m_answer = '?';
        close(ends[0]);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() {
        if (m_process <= 0) return;
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }

    bool Holds() const { return m_answer == 'y'; }

private:
    pid_t m_process = -1;
    char m_answer = '?';
};

TEST_F(ShareMode, HoldsBetweenHandles) {
    for (const Way& held : AllWays()) {
        const UniqueHandle first = Open(held);
        ASSERT_TRUE(first);
        for (const Way& asked : AllWays()) ExpectAsAgreed(held, asked);
    }
}

TEST_F(ShareMode, HoldsBetweenProcessesUntilOneIsKilled) {
    for (const Way& held : AllWays()) {
        const Holder other([&] { return Open(held); });
        ASSERT_TRUE(other.Holds());  // so the one before, killed, left nothing behind
        for (const Way& asked : AllWays()) ExpectAsAgreed(held, asked);
    }
    EXPECT_TRUE(Open({GENERIC_READ | GENERIC_WRITE, 0}));
}

TEST_F(ShareMode, AThirdMeetsEveryoneWhoIsStillThere) {
    const Way reader = {GENERIC_READ, FILE_SHARE_READ};
    UniqueHandle first = Open(reader);
    UniqueHandle second = Open(reader);
    ASSERT_TRUE(first && second);
    first.reset();
    EXPECT_FALSE(Open({GENERIC_WRITE, FILE_SHARE_READ}));
    second.reset();
    EXPECT_TRUE(Open({GENERIC_WRITE, 0}));
}

TEST_F(ShareMode, AFileThatIsInUseIsNotEmptied) {
    const UniqueHandle reader = Open({GENERIC_READ, FILE_SHARE_READ});
    EXPECT_FALSE(Open({GENERIC_READ | GENERIC_WRITE, 0}, CREATE_ALWAYS));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(Contents(), "old");
}

TEST_F(ShareMode, LeavesTheFileAsItIs) {
    { const UniqueHandle file = Open({GENERIC_READ | GENERIC_WRITE, 0}); }
    EXPECT_EQ(Contents(), "old");
}

// Openers that come at one time: one has the file, never two, never none.
TEST(ShareModeThreads, OneOfSeveralRacersWins) {
    constexpr int kThreads = 3, kRounds = 200;
    const TempFolder folder;
    std::ofstream(folder.Native("f")) << "old";
    const std::u16string path = folder.Wide("f");
    std::atomic<int> winners = 0;
    std::vector<int> winnersOf;
    const auto endRound = [&]() noexcept { winnersOf.push_back(winners.exchange(0)); };
    std::barrier start(kThreads);
    std::barrier end(kThreads, endRound);
    const auto race = [&] {
        for (int round = 0; round < kRounds; ++round) {
            start.arrive_and_wait();
            const UniqueHandle file = TakeFile(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                                           nullptr, OPEN_EXISTING, 0, nullptr));
            if (file) ++winners;
            end.arrive_and_wait();  // all have tried; only then the winner lets go
        }
    };
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i) threads.emplace_back(race);
    }
    EXPECT_EQ(winnersOf, std::vector<int>(kRounds, 1));
}

}  // namespace
