// A command of the program: how the command line spells it, as data, from which the parser, the help, the
// pages of the manual and the completions of shells are made; and what it does.
#pragma once

#include <string>
#include <vector>

#include "host/base/ExitCodes.h"
#include "host/cli/Context.h"
#include "host/cli/Option.h"

struct Example {
    std::string what;  // it does, without a full stop
    std::string line;  // "vlwav info song.wav"
};

// For people. Paragraphs are plain text; one that begins with a blank is shown as it is, line by line.
struct CommandText {
    std::string name;
    std::string summary;                   // without a full stop
    std::vector<std::string> description;  // paragraphs of the manual's page
    std::vector<Example> examples;
};

class Command {
public:
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    const CommandText& About() const { return m_text; }
    const std::vector<Option>& Options() const { return m_options; }
    // Whether the texts of tags depend on --encoding.
    virtual bool TakesEncoding() const { return false; }

    // With its options set. Throws a UsageFailure for options that make no sense, before anything is touched,
    // an OutputFailure when standard output fails, and another Failure where nothing can go on.
    virtual ExitCode Run(Context& context) = 0;

protected:
    explicit Command(CommandText text) : m_text(std::move(text)) {}

    // To be called by the constructor, in the order of the help.
    void Take(Option option) { m_options.push_back(std::move(option)); }

private:
    const CommandText m_text;
    std::vector<Option> m_options;
};
