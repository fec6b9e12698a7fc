// The README's example, run as it is printed there.
#include <cstdio>

#include "tests/host/Shell.h"

namespace {

class ExampleHost : public ShellTest {};

TEST_F(ExampleHost, ReadsTheFramesThatTheLengthPromises) {
    constexpr uint32_t kFrames = 30000;
    for (const uint16_t bits : {uint16_t{8}, uint16_t{16}})
        for (const uint16_t channels : {uint16_t{1}, uint16_t{2}})
            for (const uint32_t rate : {48000u, 44100u, 22050u}) {
                WriteWav("a.wav", channels, rate, bits, kFrames);
                const RunResult run = Run("'" EXAMPLE_PATH "' '" MODULE_PATH "' a.wav");
                ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
                long long promised = 0;
                long long total = 0;
                ASSERT_EQ(std::sscanf(run.out.c_str(), "%lld frames promised, %lld read", &promised, &total),
                          2);
                EXPECT_EQ(promised, kFrames * 48000LL / rate);
                EXPECT_NEAR(static_cast<double>(total), static_cast<double>(promised), rate == 48000 ? 0 : 3)
                    << channels << " channels of " << bits << " bits at " << rate;
            }
}

TEST_F(ExampleHost, TellsTheCodeOfAFileThatIsNotThere) {
    const RunResult run = Run("'" EXAMPLE_PATH "' '" MODULE_PATH "' missing.wav");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "can't be opened: 1000\n");
}

}  // namespace
