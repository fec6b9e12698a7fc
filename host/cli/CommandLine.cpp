#include "host/cli/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <map>

#include "host/base/Failure.h"
#include "host/cli/HelpText.h"
#include "host/cli/Nearest.h"
#include "host/files/Output.h"
#include "host/terminal/TerminalText.h"

namespace {

constexpr const char* kHint = " \"vlwav --help\" lists what there is.";

std::string IsName(const std::string& value) { return value.empty() ? "An empty name is no file's" : ""; }

// Brackets around a value mean a list to the parser; to us they are part of a name. So no option takes what
// follows beyond its own values.
CLI::Option* AddOption(CLI::App& app, const Option& option) {
    return std::visit(
        [&](auto* target) -> CLI::Option* {
            using Target = std::remove_pointer_t<decltype(target)>;
            if constexpr (std::is_same_v<Target, bool>) {
                return app.add_flag(option.names, *target, option.help);
            } else {
                CLI::Option* const added = app.add_option(option.names, *target, option.help);
                if constexpr (std::is_same_v<Target, std::vector<std::string>>) {
                    // One value each time, so that files may follow it.
                    if (!option.IsPlace()) added->expected(1)->take_all()->allow_extra_args(false);
                }
                if (option.most != UINT32_MAX) added->check(CLI::Range(option.least, option.most));
                if (!option.choices.empty()) added->check(CLI::IsMember(option.choices));
                // A script's variable that isn't set; of several inputs it is one that fails.
                if (option.words == Words::Files && !option.IsPlace()) added->check(IsName);
                return added;
            }
        },
        option.target);
}

// The parser's own way to find an option by its name ends the program where it finds no memory.
void AddOptions(CLI::App& app, const std::vector<Option>& options) {
    std::map<std::string, CLI::Option*> added;
    for (const Option& option : options) {
        CLI::Option* const made = AddOption(app, option);
        if (option.required) made->required();
        added[option.Name()] = made;
    }
    for (const Option& option : options) {
        for (const std::string& other : option.excludes) added.at(option.Name())->excludes(added.at(other));
        for (const std::string& other : option.needs) added.at(option.Name())->needs(added.at(other));
    }
}

bool TakesValue(const std::vector<Option>& options, std::string_view word) {
    for (const Option& option : options)
        for (const std::string& spelling : option.Spellings())
            if (spelling == word) return !option.IsFlag();
    return false;
}

// To the parser brackets around a word mean a list, and "--" ends with the first name. To us any word is a
// name that has brackets or stands after "--". A sign before it keeps it whole.
class GuardedWords {
public:
    GuardedWords(int argc, const char* const* argv) {
        bool namesAlone = false;
        for (int i = 0; i < argc; ++i) {
            const std::string word = argv[i];
            if (!namesAlone && word == "--")
                namesAlone = true;
            else if (namesAlone || (!word.empty() && (word.front() == '[' || word.front() == kSign)))
                m_words.push_back(kSign + word);
            else
                m_words.push_back(word);
        }
        for (const std::string& word : m_words) m_pointers.push_back(word.c_str());
    }

    int Count() const { return static_cast<int>(m_pointers.size()); }
    const char* const* Words() const { return m_pointers.data(); }

    static void Uncover(const std::vector<Option>& options) {
        for (const Option& option : options) {
            if (auto* const* const text = std::get_if<std::string*>(&option.target)) Uncover(**text);
            if (auto* const* const list = std::get_if<std::vector<std::string>*>(&option.target))
                for (std::string& text : **list) Uncover(text);
        }
    }

private:
    static constexpr char kSign = '\x01';

    static void Uncover(std::string& text) {
        if (!text.empty() && text.front() == kSign) text.erase(0, 1);
    }

    std::vector<std::string> m_words;
    std::vector<const char*> m_pointers;
};

// The first word that isn't an option, nor the value of a common one, has to be a command.
void RequireCommand(const Commands& commands, const std::vector<Option>& common, int argc,
                    const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (TakesValue(common, word))
            ++i;
        else if (word.empty() || word.front() != '-')
            return static_cast<void>(FindCommand(commands, word));
    }
}

// What the parser found wrong, with the option that was meant.
UsageFailure Wrong(const CLI::App& app, const Command* command, const std::vector<Option>& common,
                   const CLI::ParseError& error) {
    std::string text = error.what();
    if (!text.empty() && text.back() != '.') text += '.';
    const std::vector<std::string> rest = app.remaining(true);
    if (!rest.empty() && rest.front().size() > 1 && rest.front().front() == '-') {
        std::vector<std::string> known;
        for (const auto* const options : {command ? &command->Options() : &common, &common})
            for (const Option& option : *options)
                if (!option.IsPlace()) known.push_back(option.Name());
        const std::string given = rest.front().substr(0, rest.front().find('='));
        const std::string nearest = Nearest(given, known);
        text = fmt::format("\"{}\" has no option {}{}", command ? command->About().name : "vlwav", given,
                           nearest.empty() ? std::string(".") : "; did you mean " + nearest + "?");
    } else if (!command && dynamic_cast<const CLI::RequiredError*>(&error)) {
        text = "No command is given.";
    }
    return UsageFailure(text + (command
                                    ? fmt::format(" \"vlwav {} --help\" tells more.", command->About().name)
                                    : std::string(kHint)));
}

// Of all that may be of different releases. The program's own is told also where there is no module.
std::string VersionText(Context& context) {
    std::string text = fmt::format("vlwav {}\nlibvlwav {}\nVlACWav3 ", VLWAV_VERSION, vlw::version_text());
    try {
        const vlw::Module& module = context.Module();
        return text + fmt::format("{}, {}\n", module.version(), TerminalText::Printable(module.path()));
    } catch (const Failure& failure) {
        return text + "is missing: " + failure.what() + '\n';
    }
}

void Tell(const std::string& text) {
    Output output = Output::Standard();
    output.Write(text);
    output.Commit();
}

}  // namespace

std::vector<Option> CommonOptions(Context& context) {
    return {
        {"--module", "MODULE", "The module's file, instead of the registered one or that beside this program",
         &context.module, Words::Files},
        Option{"--encoding", "ENCODING", "Of the text of tags, in info, tag and convert; auto if not given",
               &context.encoding}
            .OneOf({"1252", "utf-8", "auto"}),
        {"--verbose", "", "Tell more on standard error, which module was loaded for one", &context.verbose},
        {"--quiet", "", "Tell failures alone", &context.quiet},
    };
}

const Command& FindCommand(const Commands& commands, const std::string& name) {
    std::vector<std::string> names;
    for (const auto& command : commands) {
        if (command->About().name == name) return *command;
        names.push_back(command->About().name);
    }
    const std::string nearest = Nearest(name, names);
    throw UsageFailure(
        fmt::format("There is no command \"{}\"{}", name,
                    nearest.empty() ? std::string(".") + kHint : "; did you mean \"" + nearest + "\"?"));
}

Command* CommandLine::Parse(int argc, const char* const* argv) {
    const std::vector<Option> common = CommonOptions(m_context);
    RequireCommand(m_commands, common, argc, argv);
    CLI::App app("", "vlwav");
    app.require_subcommand(1);
    app.fallthrough();  // the common options may stand after the command as well
    AddOptions(app, common);
    app.set_version_flag("--version", "");  // after --module, which has its value then
    std::vector<const CLI::App*> parsers;
    for (const auto& command : m_commands) {
        CLI::App* const parser = app.add_subcommand(command->About().name, command->About().summary);
        AddOptions(*parser, command->Options());
        parsers.push_back(parser);
    }
    const auto chosen = [&]() -> Command* {
        for (size_t i = 0; i < parsers.size(); ++i)
            if (parsers[i]->parsed()) return m_commands[i].get();
        return nullptr;
    };
    try {
        const GuardedWords words(argc, argv);
        app.parse(words.Count(), words.Words());
    } catch (const CLI::CallForHelp&) {
        const Command* const command = chosen();
        Tell(command ? HelpText::Of(*command, common) : HelpText::OfProgram(m_commands, common));
        return nullptr;
    } catch (const CLI::CallForVersion&) {
        GuardedWords::Uncover(common);
        Tell(VersionText(m_context));
        return nullptr;
    } catch (const CLI::ParseError& error) {
        throw Wrong(app, chosen(), common, error);
    }
    Command* const command = chosen();
    GuardedWords::Uncover(common);
    GuardedWords::Uncover(command->Options());
    if (!m_context.encoding.empty() && !command->TakesEncoding())
        throw UsageFailure(fmt::format("\"{}\" reads and writes no text of tags; --encoding says nothing.",
                                       command->About().name));
    return command;
}
