// What the user wrote, put into the commands' options. Knows the commands by their tables alone.
#pragma once

#include <memory>
#include <vector>

#include "host/cli/Command.h"
#include "host/cli/Context.h"

using Commands = std::vector<std::unique_ptr<Command>>;

// The options that every command takes, before it or after.
std::vector<Option> CommonOptions(Context& context);

// The command of that name. Throws UsageFailure that names the nearest one.
const Command& FindCommand(const Commands& commands, const std::string& name);

class CommandLine {
public:
    // Both are borrowed.
    CommandLine(const Commands& commands, Context& context) : m_commands(commands), m_context(context) {}

    // The command to run, or nothing where all is said already: help and version, on standard output. Throws
    // UsageFailure, and OutputFailure.
    Command* Parse(int argc, const char* const* argv);

private:
    const Commands& m_commands;
    Context& m_context;
};
