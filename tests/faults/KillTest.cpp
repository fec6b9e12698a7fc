// Commands that are killed at random moments: whatever file one was at work on is what it was or what it was
// to be, and the next run leaves nothing of the killed one. A few kills by themselves; as many as VL_KILLS in
// the environment says.
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <map>
#include <random>
#include <thread>

#include "capi/posix/Descriptor.h"
#include "tests/host/VlwavTest.h"
#include "tests/wave/SaveLayouts.h"

namespace {

using Clock = std::chrono::steady_clock;

class Kills : public VlwavTest {
protected:
    static int Count(int few) {
        const char* const wanted = std::getenv("VL_KILLS");
        return wanted ? std::atoi(wanted) : few;
    }
    // How long an undisturbed run takes, which has to succeed.
    Clock::duration Measure(const std::string& arguments) const {
        const auto start = Clock::now();
        const RunResult run = Vlwav(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return Clock::now() - start;
    }
    // Starts a run and kills it at a moment of the time that one takes, or a little later.
    void RunAndKill(const std::string& arguments, Clock::duration whole) {
        const std::string line = "exec '" VLWAV_PATH "' " + arguments + " >/dev/null 2>&1";
        const pid_t child = fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            if (chdir(m_folder.c_str()) == 0) execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
            _exit(1);
        }
        std::uniform_int_distribution<Clock::rep> moment(0, whole.count());
        std::this_thread::sleep_for(Clock::duration(moment(m_random)));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        m_killed += WIFSIGNALED(status);
    }

    std::minstd_rand m_random{20};
    int m_killed = 0;
};

TEST_F(Kills, OfTagLeaveTheAudioWholeAndTheTagsOldOrNew) {
    constexpr const char* kLayouts[] = {"the writer's own",  "the writer's own, without a list",
                                        "list in front",     "two lists",
                                        "list between",      "foreign chunks around",
                                        "odd audio without", "trailer"};
    constexpr int kCopies = 6;
    struct File {
        std::string name, before, after;
        const save_test::Layout* layout;
        save_test::Tags fresh;
    };
    const auto layouts = save_test::Layouts();
    std::vector<File> files;
    std::string names;
    for (int copy = 0; copy < kCopies; ++copy)
        for (const char* const name : kLayouts) {
            const auto layout = std::find_if(layouts.begin(), layouts.end(),
                                             [&](const auto& one) { return one.name == name; });
            files.push_back({std::to_string(files.size()) + ".wav", layout->image.Text(), {}, &*layout, {}});
            names += " " + files.back().name;
            WriteBytes(files.back().name, files.back().before);
        }
    const auto tagsOf = [](const std::string& bytes) {
        const ScopedFile file(std::vector<uint8_t>(bytes.begin(), bytes.end()));
        CWaveFile wave;
        EXPECT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
        return wave.Chunks();
    };
    const std::string change = "tag --set title=New --set artist=Ann";
    const auto whole = Measure(change + names);
    for (File& file : files) {
        file.after = Bytes(file.name);
        file.fresh = tagsOf(file.after);
    }
    const auto held = Names();
    int halfway = 0;
    for (int round = Count(5); round > 0; --round) {
        for (const File& file : files)
            if (Bytes(file.name) != file.before) WriteBytes(file.name, file.before);
        RunAndKill(change + names, whole);
        EXPECT_EQ(Names(), held);
        for (const File& file : files) {
            const std::string bytes = Bytes(file.name);
            if (bytes == file.before || bytes == file.after) continue;
            ++halfway;
            save_test::ExpectSound(ScopedFile(std::vector<uint8_t>(bytes.begin(), bytes.end())), *file.layout,
                                   file.fresh);
            ASSERT_EQ(Vlwav(change + " " + file.name).exitCode, 0);
            EXPECT_TRUE(tagsOf(Bytes(file.name)) == file.fresh) << file.layout->name;
        }
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
    std::printf("%d killed, %d in the middle of a file\n", m_killed, halfway);
}

TEST_F(Kills, OfConvertLeaveWholeFilesAndNothingThatTheNextRunDoesntTakeAway) {
    std::string inputs;
    std::vector<std::string> outputs;
    std::filesystem::create_directory(m_folder / "out");
    for (int i = 0; i < 12; ++i) {
        const std::string name = std::to_string(i) + ".wav";
        WriteWav(name, 2, 44100, 16, 3000 + 100 * static_cast<uint32_t>(i));
        WriteBytes("out/" + name, "what was there");
        inputs += " " + name;
        outputs.push_back("out/" + name);
    }
    const std::string change = "convert --overwrite --rate 48000 -o out" + inputs;
    const auto held = Names();
    // Of a run that was killed between two steps, and of one that is still at work.
    WriteBytes("out/.vlwav-LeftO1", "left");
    WriteBytes("out/.vlwav-AtWork", "at work");
    Descriptor atWork;
    ASSERT_EQ(atWork.OpenLeftover(m_folder / "out/.vlwav-AtWork"), 0);
    ASSERT_EQ(atWork.Hold(), 0);
    const auto whole = Measure(change);
    EXPECT_EQ(Bytes("out/.vlwav-AtWork"), "at work");
    std::filesystem::remove(m_folder / "out/.vlwav-AtWork");
    EXPECT_EQ(Names(), held);
    std::map<std::string, std::string> after;
    for (const std::string& name : outputs) after[name] = Bytes(name);
    int left = 0, halfway = 0;
    for (int round = Count(3); round > 0; --round) {
        for (const std::string& name : outputs) WriteBytes(name, "what was there");
        RunAndKill(change, whole);
        left += Names() != held;
        int made = 0;
        for (const std::string& name : outputs) {
            const std::string bytes = Bytes(name);
            EXPECT_TRUE(bytes == "what was there" || bytes == after[name]) << name << bytes.size();
            made += bytes == after[name];
        }
        halfway += made != 0 && made != static_cast<int>(outputs.size());
        Measure(change);
        EXPECT_EQ(Names(), held);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
    std::printf("%d killed, %d among the files, %d left a name\n", m_killed, halfway, left);
}

}  // namespace
