// Writes the pages of the manual and the completions of the shells into a folder, for the build.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "host/cli/Completion.h"
#include "host/cli/ManPage.h"
#include "host/commands/Commands.h"

int main(int argc, char** argv) {
    if (argc != 2) return EXIT_USAGE;
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    bool good = true;
    const auto write = [&](const std::string& name, const std::string& text) {
        std::ofstream file(folder / name, std::ios::binary);
        good = good && (file << text).flush();
    };
    Context context;
    const AllCommands all;
    const Commands& commands = all.List();
    const std::vector<Option> common = CommonOptions(context);
    write("vlwav.1", ManPage::OfProgram(commands, common, VLWAV_VERSION));
    for (const auto& command : commands)
        write("vlwav-" + command->About().name + ".1", ManPage::Of(*command, common, VLWAV_VERSION));
    write("vlwav.bash", Completion::Bash(commands, common));
    write("_vlwav", Completion::Zsh(commands, common));
    write("vlwav.fish", Completion::Fish(commands, common));
    return good ? EXIT_DONE : EXIT_FAILED;
}
