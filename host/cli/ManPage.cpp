#include "host/cli/ManPage.h"

#include <fmt/format.h>

#include "host/cli/HelpText.h"

namespace ManPage {
namespace {

struct Entry {
    const char* term;
    const char* meaning;
};
constexpr Entry kEnvironment[] = {
    {"LC_ALL, LC_MESSAGES, LANG", "The language of the formats' texts; the first that is set counts."},
    {"NO_COLOR", "If it is set and not empty, nothing is coloured."},
    {"TMPDIR", "Where what goes to a pipe and can't go there at once is kept until it does."},
};
constexpr Entry kExitStatus[] = {
    {"0", "Everything that was asked for was done."},
    {"1", "A file or an output failed, and standard error says which and why; the others are done."},
    {"2", "The command line asks for something that can't be; nothing was touched."},
};

// Of the last change to what the pages say.
constexpr const char* kDate = "2026-11-26";
// Of a line of the source, which is longer with its backslashes.
constexpr size_t kColumns = 68;

// A backslash begins a request wherever it stands; a minus would become a hyphen, which nobody can paste; a
// dot or an apostrophe begins one at a line's start.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else if ((c == '.' || c == '\'') && (escaped.empty() || escaped.back() == '\n'))
            escaped += std::string("\\&") + c;
        else
            escaped += c;
    }
    return escaped;
}

std::string Section(const std::string& title) { return ".SH " + title + '\n'; }

std::string Flowing(const std::string& text) { return Escaped(HelpText::Wrapped(text, 0, 0, kColumns)); }

std::string Tagged(const std::string& term, const std::string& meaning) {
    return ".TP\n\\fB" + Escaped(term) + "\\fR\n" + Flowing(meaning);
}

std::string Paragraphs(const std::vector<std::string>& paragraphs) {
    std::string text;
    for (const std::string& paragraph : paragraphs) {
        if (!text.empty()) text += ".PP\n";
        text += paragraph.front() == ' ' ? ".nf\n" + Escaped(paragraph) + "\n.fi\n" : Flowing(paragraph);
    }
    return text;
}

std::string Head(const std::string& name, const std::string& version, const std::string& summary) {
    std::string title = name;
    for (char& c : title)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return fmt::format(".TH {} 1 {} \"vlwav {}\" \"User Commands\"\n{}{} \\- {}\n", Escaped(title), kDate,
                       version, Section("NAME"), Escaped(name), Escaped(summary));
}

std::string OptionEntries(const std::vector<Option>& options) {
    std::string text;
    for (const Option& option : options) {
        const std::string range = HelpText::Range(option);
        text += Tagged(HelpText::Spelling(option), option.help + (range.empty() ? "." : ": " + range + "."));
    }
    return text;
}

template <size_t N>
std::string Entries(const std::string& title, const Entry (&rows)[N]) {
    std::string text = Section(title);
    for (const Entry& row : rows) text += Tagged(row.term, row.meaning);
    return text;
}

}  // namespace

std::string OfProgram(const Commands& commands, const std::vector<Option>& common,
                      const std::string& version) {
    std::string text = Head("vlwav", version, "read, write, convert and tag WAV files");
    text += Section("SYNOPSIS") + "\\fBvlwav\\fR \\fICOMMAND\\fR [\\fIOPTION\\fR]... [\\fIFILE\\fR]...\n";
    text += Section("DESCRIPTION");
    text +=
        Paragraphs({"Gives the audio of WAV and AIFF files as 16-bit PCM, makes WAV files of the formats "
                    "that discs, phones and "
                    "players take, and shows and changes tags without touching the audio.",
                    "A file is named by its bytes, whatever they are; after \"--\" also one whose name "
                    "begins with a minus. Where a "
                    "command takes it, \"-\" is standard input or standard output."});
    text += Section("COMMANDS");
    for (const auto& command : commands)
        text += Tagged(command->About().name,
                       command->About().summary + ". See vlwav-" + command->About().name + "(1).");
    text += Section("OPTIONS") + OptionEntries(common);
    text += Tagged("-h, --help", "What there is, in short.") +
            Tagged("--version", "The versions of program, library and module, and where that is.");
    text += Entries("ENVIRONMENT", kEnvironment) + Entries("EXIT STATUS", kExitStatus);
    text += ".PP\n" + Flowing("A signal ends the program as a signal; what wasn't whole by then is gone.");
    return text;
}

std::string Of(const Command& command, const std::vector<Option>& common, const std::string& version) {
    const CommandText& told = command.About();
    std::string text = Head("vlwav-" + told.name, version, told.summary);
    text += Section("SYNOPSIS") + "\\fBvlwav\\fR " + Escaped(HelpText::Synopsis(command)) + '\n';
    text += Section("DESCRIPTION") + Paragraphs(told.description);
    if (!command.Options().empty()) text += Section("OPTIONS") + OptionEntries(command.Options());
    text += Section("OPTIONS OF ALL COMMANDS") + OptionEntries(common);
    text += Section("EXAMPLES");
    for (const Example& example : told.examples) {
        if (&example != &told.examples.front()) text += ".PP\n";
        text += Flowing(example.what + ':') + ".PP\n.nf\n.RS\n" + Escaped(example.line) + "\n.RE\n.fi\n";
    }
    text += Entries("EXIT STATUS", kExitStatus);
    text += Section("SEE ALSO") + "vlwav(1)\n";
    return text;
}

}  // namespace ManPage
