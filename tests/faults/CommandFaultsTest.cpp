// Each command of the program with one call of the system, or one allocation, failing: the first, the second,
// and so on until nothing fails any more. By itself a sample of them; with VL_ALL_FAULTS in the environment
// each one, or each one of the kinds that it names.
#include <map>

#include "tests/host/VlwavTest.h"

namespace {

struct Job {
    const char* name;
    const char* arguments;
    const char* output;  // that isn't there before; null: a.wav is changed in its place, or nothing is
};

class CommandFaults : public VlwavTest, public testing::WithParamInterface<Job> {
protected:
    using Files = std::map<std::string, std::string>;

    void SetUp() override {
        VlwavTest::SetUp();
        WriteImage("a.wav", WavImage()
                                .Fmt(1, 2, 48000, 16)
                                .Chunk("data", std::string(60000, 'x'))
                                .Info(None().Chunk("IART", "Ann").Chunk("INAM", "Old")));
        ASSERT_EQ(Run("ffmpeg -loglevel error -i a.wav -c:a adpcm_ms -f wav coded.wav && "
                      "/usr/bin/convert-im6.q16 -size 20x20 xc:red in.png")
                      .exitCode,
                  0);
        m_before = Held();
        m_oldTags = Vlwav("tag a.wav").out;
    }

    Files Held() const {
        Files files;
        for (const std::string& name : Names())
            if (name[0] != '.') files[name] = Bytes(name);
        return files;
    }
    void Restore() const {
        for (const auto& [name, bytes] : Held())
            if (m_before.count(name) == 0) std::filesystem::remove(m_folder / name);
        for (const auto& [name, bytes] : m_before)
            if (Bytes(name) != bytes) WriteBytes(name, bytes);
    }
    RunResult RunFailing(const std::string& fault) const {
        std::filesystem::remove(m_folder / ".failed");
        // The sanitizer wants to be loaded first, and an allocation that fails isn't its business.
        return Run("timeout -s KILL 60 env LD_PRELOAD='" FAILCALL_PATH "' VL_FAIL=" + fault +
                   " VL_FAIL_NOTE=\"$PWD/.failed\" "
                   "ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=0:allocator_may_return_null=1 "
                   "'" VLWAV_PATH "' " +
                   GetParam().arguments);
    }
    // Inputs as they were; a file that is changed in its place may also have its new tags already.
    void ExpectWhole(const Files& files, const std::string& newTags) const {
        for (const auto& [name, bytes] : files) {
            if (bytes == m_before.at(name)) continue;
            EXPECT_EQ(name, "a.wav");
            const std::string tags = Vlwav("tag a.wav").out;
            EXPECT_TRUE(tags == newTags || tags == m_oldTags) << tags;
            EXPECT_NE(bytes.find("data\x60\xEA" + std::string(2, '\0') + std::string(60000, 'x')),
                      bytes.npos);
        }
    }

    Files m_before;
    std::string m_oldTags;
};

TEST_P(CommandFaults, EndWithTheReasonOrAsThoughNothingHadHappened) {
    const RunResult clean = Vlwav(GetParam().arguments);
    ASSERT_EQ(clean.exitCode, 0) << clean.err;
    const Files wanted = Held();
    const std::string newTags = Vlwav("tag a.wav").out;
    const char* const all = std::getenv("VL_ALL_FAULTS");
    const std::string_view kinds = all && *all != '1' ? all : "read write open flush cut memory";
    for (const std::string kind : {"read", "write", "open", "flush", "cut", "memory"}) {
        if (kinds.find(kind) == std::string_view::npos) continue;
        for (const char* lasting : {"", "+"}) {
            for (int n = 1;; n += all ? 1 : 1 + n) {
                Restore();
                const RunResult run = RunFailing(kind + ":" + std::to_string(n) + lasting);
                if (!std::filesystem::exists(m_folder / ".failed")) break;
                SCOPED_TRACE(kind + ":" + std::to_string(n) + lasting + " " + run.err);
                if (run.exitCode == 0) {
                    EXPECT_EQ(run.out, clean.out);
                    EXPECT_TRUE(Held() == wanted);
                } else {
                    // The loader's own way to end a process whose thread finds no memory for a library's
                    // data.
                    const bool byLoader =
                        run.exitCode == 127 && run.err.ends_with("thread-local data: ABORT\n");
                    EXPECT_TRUE(byLoader || run.exitCode == 1) << run.exitCode;
                    EXPECT_TRUE(byLoader || run.err.starts_with("vlwav: "));
                    // A whole output of which only the telling failed may stay.
                    Files files = Held();
                    if (GetParam().output && files.count(GetParam().output) != 0) {
                        EXPECT_TRUE(files[GetParam().output] == wanted.at(GetParam().output));
                        files.erase(GetParam().output);
                    }
                    ASSERT_EQ(files.size(), m_before.size());
                    ExpectWhole(files, newTags);
                }
            }
        }
    }
}

constexpr Job kJobs[] = {
    {"Info", "info a.wav coded.wav", nullptr},
    {"Decode", "decode a.wav --rate 44100 -o out.raw", "out.raw"},
    {"DecodeCoded", "decode coded.wav -o out.raw", "out.raw"},
    {"Convert", "convert a.wav -o out.wav --rate 44100 --set title=New", "out.wav"},
    {"Tag", "tag a.wav --set title=New --set composer=Bo", nullptr},
    {"Picture", "picture in.png --to jpg -o out.jpg", "out.jpg"},
};
INSTANTIATE_TEST_SUITE_P(Each, CommandFaults, testing::ValuesIn(kJobs),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
