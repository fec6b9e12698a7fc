// Saves that are disturbed at every place where one can be.
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <random>

#include "tests/platform/SystemFaults.h"
#include "tests/support/FailingAllocator.h"
#include "tests/wave/SaveLayouts.h"

namespace {

using namespace save_test;

const Tags kFresh[] = {
    {},
    {{FourCC("INAM"), "Newer"}, {FourCC("ICRD"), "2004"}},
    {{FourCC("INAM"), std::string(300, 'n')}},
};

// Runs `disturb(file, fresh, n)`, a save that is disturbed at its n-th place, until it gives false: there are
// no more. Behind each the file is sound, and the next save brings it into order. With a stride, only every
// so many pairs of layout and tags.
template <class Disturb>
void EveryDisturbance(Disturb disturb, int stride = 1) {
    int pair = 0;
    for (const Layout& layout : Layouts()) {
        for (const Tags& fresh : kFresh) {
            bool goesOn = pair++ % stride == 0;
            for (int n = 0; goesOn && !testing::Test::HasFailure(); ++n) {
                SCOPED_TRACE(layout.name + ", " + std::to_string(fresh.size()) + " new tags, " +
                             std::to_string(n));
                const ScopedFile file(layout.image.Image());
                goesOn = disturb(file, fresh, n);
                EXPECT_TRUE(goesOn || n > 0) << "nothing was disturbed";
                ExpectSound(file, layout, fresh);
                const WithFaults none({.flushes = false});
                Save(file, fresh);
                ExpectSound(file, layout, fresh);
                EXPECT_TRUE(CleanWalk(Bytes(file)));
            }
        }
    }
}

Tags ReadTags(const ScopedFile& file) {
    CWaveFile wave;
    EXPECT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    return wave.Chunks();
}

// Without the new tags, everything is as it was; what an earlier save left unfinished may be gone.
void ExpectTakenBack(const ScopedFile& file, const std::string& before, const Tags& fresh) {
    EXPECT_TRUE(ReadTags(file) == fresh || before.starts_with(Bytes(file)));
}

TEST(SaveFaults, AnyChangeThatFails) {
    for (const bool lasting : {false, true}) {
        EveryDisturbance([lasting](const ScopedFile& file, const Tags& fresh, int n) {
            const std::string before = Bytes(file);
            const WithFaults faults(
                {.changesUntilError = n, .lasting = lasting, .flushes = false, .error = EIO});
            Save(file, fresh);
            const bool failed = faults.ChangesSeen() > n;
            if (!lasting && failed) ExpectTakenBack(file, before, fresh);
            return failed;
        });
    }
}

TEST(SaveFaults, FullDisk) {
    signal(SIGXFSZ, SIG_IGN);
    EveryDisturbance([](const ScopedFile& file, const Tags& fresh, int n) {
        const std::string before = Bytes(file);
        struct rlimit limit = {};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlim_t room = static_cast<rlim_t>(n) * 7;
        const struct rlimit tight = {before.size() + room, limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
        const WithFaults none({.flushes = false});
        Save(file, fresh);
        setrlimit(RLIMIT_FSIZE, &limit);
        ExpectTakenBack(file, before, fresh);
        return room < 3 * (ListOf(fresh).size() + 20);
    });
    signal(SIGXFSZ, SIG_DFL);
}

TEST(SaveFaults, NoMemory) {
    EveryDisturbance([](const ScopedFile& file, const Tags& fresh, int n) {
        const std::string before = Bytes(file);
        CWaveFile wave;
        EXPECT_EQ(wave.OpenForReading(file.Wide().c_str(), false), RESULT_OK);
        wave.Chunks() = fresh;
        wave.SetModified(true);
        {
            const WithFaults none({.flushes = false});
            const FailingAllocator heap(n);
            wave.CloseFile();
        }
        ExpectTakenBack(file, before, fresh);
        return n < 25;
    });
}

// Runs `work` in a process that is killed before the n-th system call of it is made; false if it makes fewer.
template <class Work>
bool KillAtCall(int n, Work work) {
    const pid_t child = fork();
    if (child == 0) {
        work([] {
            if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
            raise(SIGSTOP);
        });
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSTOPPED(status)) << "ptrace is not allowed here";
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_EXITKILL);
    for (int stops = 0; stops <= 2 * n && WIFSTOPPED(status); ++stops) {  // each call stops twice
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    if (!WIFSTOPPED(status)) return false;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
}

TEST(SaveFaults, ProcessKilledAtAnySystemCall) {
    EveryDisturbance(
        [](const ScopedFile& file, const Tags& fresh, int n) {
            return KillAtCall(n, [&](auto begin) {
                CWaveFile wave;
                wave.OpenForReading(file.Wide().c_str(), false);
                wave.Chunks() = fresh;
                wave.SetModified(true);
                const WithFaults none({.flushes = false});
                begin();
                wave.CloseFile();
            });
        },
        5);  // a process for each call takes time
}

TEST(SaveFaults, ProcessKilledAtRandomMoments) {
    std::mt19937 random(7);
    for (const Layout& layout : Layouts()) {
        const ScopedFile file(layout.image.Image());
        for (int round = 0; round < 5; ++round) {
            SCOPED_TRACE(layout.name + ", round " + std::to_string(round));
            const WithFaults none({.flushes = false});
            const pid_t child = fork();
            if (child == 0) {
                for (size_t i = 0; i < 1000; ++i) Save(file, i & 1 ? layout.old : kFresh[2]);
                _exit(0);
            }
            usleep(static_cast<useconds_t>(random() % 4000));
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            ExpectSound(file, layout, kFresh[2]);
        }
        Save(file, kFresh[1]);
        EXPECT_EQ(ReadTags(file), kFresh[1]);
    }
}

}  // namespace
