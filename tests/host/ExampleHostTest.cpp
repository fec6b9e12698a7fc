// The README's example, run as it is printed there.
#include "tests/host/Shell.h"

namespace {

class ExampleHost : public ShellTest {};

TEST_F(ExampleHost, TellsFramesOrTheCodeOfAFileThatIsNotThere) {
    const auto read = [&](const std::string& file) {
        return Run("'" EXAMPLE_PATH "' '" MODULE_PATH "' " + file);
    };
    WriteWav("same.wav", 2, 48000, 16, 30000);
    EXPECT_EQ(read("same.wav").out, "30000 frames promised, 30000 read\n");
    WriteWav("other.wav", 1, 22050, 8, 30000);
    const RunResult other = read("other.wav");
    EXPECT_EQ(other.exitCode, 0);
    EXPECT_EQ(other.out.find("65306 frames promised, 6530"), 0u) << other.out;
    const RunResult missing = read("missing.wav");
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.out.find("can't be opened: 1000 The file could not be opened"), 0u) << missing.out;
}

}  // namespace
