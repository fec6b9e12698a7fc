#include "host/cli/HelpText.h"
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
        return m_name.empty() ? HelpText::OfProgram(m_commands, common)
                              : HelpText::Of(FindCommand(m_commands, m_name), common);
    }

    const Commands& m_commands;
    std::string m_name;
};

}  // namespace

std::unique_ptr<Command> MakeHelpCommand(const Commands& commands) {
    return std::make_unique<HelpCommand>(commands);
}
