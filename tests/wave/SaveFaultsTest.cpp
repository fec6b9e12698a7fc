// Saves that are disturbed at every place where one can be.
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
    {{FourCC("INAM"), std::string(90, 'n')}},
};

// Runs `disturb(file, fresh, n)`, a save that is disturbed at its n-th place, until it returns false: there
// are no more. After each the file is sound, and the next save brings it into order. With a stride, only
// every so many pairs of layout and tags.
template <class Disturb>
void EveryDisturbance(Disturb disturb, size_t stride = 1) {
    const std::vector<Layout> layouts = Layouts();
    for (size_t pair = 0; pair < layouts.size() * std::size(kFresh); pair += stride) {
        const Layout& layout = layouts[pair / std::size(kFresh)];
        const Tags& fresh = kFresh[pair % std::size(kFresh)];
        bool goesOn = true;
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

Tags ReadTags(const ScopedFile& file) {
    CWaveFile wave;
    EXPECT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    return wave.Chunks();
}

// Without the new tags, everything is as it was; what an earlier save left unfinished may be gone.
void ExpectTakenBack(const ScopedFile& file, const std::string& before, const Tags& fresh) {
    EXPECT_TRUE(ReadTags(file) == fresh || before.starts_with(Bytes(file)));
}

// One that lasts leaves the file as a process does that is killed there.
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
    const auto disturb = [](const ScopedFile& file, const Tags& fresh, int n) {
        const std::string before = Bytes(file);
        struct rlimit limit = {};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlim_t room = static_cast<rlim_t>(n) * static_cast<rlim_t>(n);  // the first bytes matter most
        const struct rlimit tight = {before.size() + room, limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
        const WithFaults none({.flushes = false});
        Save(file, fresh);
        setrlimit(RLIMIT_FSIZE, &limit);
        ExpectTakenBack(file, before, fresh);
        return room < 3 * (ListOf(fresh).size() + 20);
    };
    EveryDisturbance(disturb, 2);
    signal(SIGXFSZ, SIG_DFL);
}

TEST(SaveFaults, NoMemory) {
    const auto disturb = [](const ScopedFile& file, const Tags& fresh, int n) {
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
        const bool failed = FailingAllocator::HasFailed();
        ExpectTakenBack(file, before, fresh);
        return failed;
    };
    EveryDisturbance(disturb, 2);
}

TEST(SaveFaults, ProcessKilledAtRandomMoments) {
    std::mt19937 random(7);
    for (const Layout& layout : Layouts()) {
        const ScopedFile file(layout.image.Image());
        for (int round = 0; round < 2; ++round) {
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
