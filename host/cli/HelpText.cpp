#include "host/cli/HelpText.h"

#include <fmt/format.h>

#include <algorithm>

namespace HelpText {
namespace {

constexpr size_t kMargin = 2;
constexpr size_t kTermMost = 26;  // columns of the left side

// Terms on the left, what they mean on the right, below each other.
class Table {
public:
    void Add(std::string term, std::string meaning) {
        if (term.size() <= kTermMost) m_width = std::max(m_width, term.size());
        m_rows.emplace_back(std::move(term), std::move(meaning));
    }

    std::string Text() const {
        const size_t indent = kMargin + m_width + kMargin;
        std::string text;
        for (const auto& [term, meaning] : m_rows) {
            text += std::string(kMargin, ' ') + term;
            if (term.size() > m_width) text += '\n';
            text += std::string(indent - kMargin - (term.size() > m_width ? -kMargin : term.size()), ' ');
            text += Wrapped(meaning, indent, indent);
        }
        return text;
    }

private:
    size_t m_width = 0;
    std::vector<std::pair<std::string, std::string>> m_rows;
};

std::string Meaning(const Option& option) {
    const std::string range = Range(option);
    return range.empty() ? option.help : fmt::format("{} ({})", option.help, range);
}

std::string OptionsText(const std::string& title, const std::vector<Option>& options, bool places) {
    Table table;
    bool any = false;
    for (const Option& option : options) {
        if (option.IsPlace() != places) continue;
        table.Add(Spelling(option), Meaning(option));
        any = true;
    }
    return any ? '\n' + title + ":\n" + table.Text() : "";
}

}  // namespace

std::string Wrapped(const std::string& text, size_t column, size_t indent, size_t columns) {
    std::string lines;
    bool begun = false;  // a word stands in the line
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(' ', at), text.size());
        if (begun && column + 1 + end - at > columns) {
            lines += '\n' + std::string(indent, ' ');
            column = indent;
        } else if (begun) {
            lines += ' ';
            ++column;
        }
        lines.append(text, at, end - at);
        column += end - at;
        begun = true;
        at = end + 1;
    }
    return lines + '\n';
}

std::string Spelling(const Option& option) {
    std::string text;
    for (const std::string& spelling : option.Spellings()) text += (text.empty() ? "" : ", ") + spelling;
    return option.value.empty() ? text : text + ' ' + option.value;
}

std::string Range(const Option& option) {
    if (!option.choices.empty()) {
        std::string text;
        for (size_t i = 0; i < option.choices.size(); ++i)
            text += (i == 0 ? "" : i + 1 == option.choices.size() ? " or " : ", ") + option.choices[i];
        return text;
    }
    if (option.most == UINT32_MAX) return "";
    return fmt::format("{} to {}", option.least, option.most);
}

std::string Synopsis(const Command& command) {
    std::string text = command.About().name;
    const auto& options = command.Options();
    if (std::any_of(options.begin(), options.end(), [](const Option& option) { return !option.IsPlace(); }))
        text += " [OPTION]...";
    for (const Option& option : options) {
        if (!option.IsPlace() && !option.required) continue;
        std::string word = option.IsPlace() ? option.names : option.Spellings().front() + ' ' + option.value;
        if (option.IsPlace() && option.IsList()) word += "...";
        text += option.required ? ' ' + word : " [" + word + ']';
    }
    return text;
}

std::string OfProgram(const Commands& commands, const std::vector<Option>& common) {
    Table table;
    for (const auto& command : commands) table.Add(command->About().name, command->About().summary);
    return "Reads, writes, converts and tags WAV files.\n\nUsage: vlwav COMMAND [OPTION]... "
           "FILE...\n\nCommands:\n" +
           table.Text() + OptionsText("Options of all commands", common, false) +
           "\n\"vlwav COMMAND --help\" tells more of each, and has examples.\n";
}

std::string Of(const Command& command, const std::vector<Option>& common) {
    std::string text = command.About().summary + ".\n\n" + Wrapped("Usage: vlwav " + Synopsis(command), 0, 9);
    text += OptionsText("Arguments", command.Options(), true);
    text += OptionsText("Options", command.Options(), false);
    text += OptionsText("Options of all commands", common, false);
    text += "\nExamples:\n";
    for (const Example& example : command.About().examples)
        text += "  " + Wrapped(example.what + ':', 2, 2) + "      " + example.line + '\n';
    return text;
}

}  // namespace HelpText
