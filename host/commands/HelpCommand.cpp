#include <fmt/format.h>

#include "host/base/Failure.h"
#include "host/cli/HelpText.h"
#include "host/cli/Nearest.h"
#include "host/commands/Commands.h"
#include "host/files/Output.h"

namespace {

class HelpCommand final : public Command {
public:
    explicit HelpCommand(const Commands& commands)
        : Command({"help",
                   "Tell how a command is called",
                   {"Shows what \"vlwav COMMAND --help\" shows, or without COMMAND what commands there are."},
                   {{"What commands there are", "vlwav help"},
                    {"All about converting", "vlwav help convert"},
                    {"The same", "vlwav convert --help"}}}),
          m_commands(commands) {
        Take({"COMMAND", "", "The command to tell of", &m_name, Words::Commands});
    }

    ExitCode Run(Context& context) override {
        Output output = Output::Standard();
        output.Write(Text(CommonOptions(context)));
        output.Commit();
        return EXIT_DONE;
    }

private:
    std::string Text(const std::vector<Option>& common) const {
        if (m_name.empty()) return HelpText::OfProgram(m_commands, common);
        std::vector<std::string> names;
        for (const auto& command : m_commands) {
            if (command->About().name == m_name) return HelpText::Of(*command, common);
            names.push_back(command->About().name);
        }
        const std::string nearest = Nearest(m_name, names);
        throw UsageFailure(fmt::format("There is no command \"{}\"{}", m_name,
                                       nearest.empty() ? "." : "; did you mean \"" + nearest + "\"?"));
    }

    const Commands& m_commands;
    std::string m_name;
};

}  // namespace

std::unique_ptr<Command> MakeHelpCommand(const Commands& commands) {
    return std::make_unique<HelpCommand>(commands);
}
