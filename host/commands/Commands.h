// All commands of the program.
#pragma once

#include "host/cli/CommandLine.h"

// One of each, made by the file that is named after it.
std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeDecodeCommand();
std::unique_ptr<Command> MakeConvertCommand();
std::unique_ptr<Command> MakeTagCommand();
std::unique_ptr<Command> MakePlotCommand();
std::unique_ptr<Command> MakeCompareCommand();
std::unique_ptr<Command> MakePictureCommand();
std::unique_ptr<Command> MakeFormatsCommand();
std::unique_ptr<Command> MakeRegisterCommand();
std::unique_ptr<Command> MakeUnregisterCommand();
std::unique_ptr<Command> MakeWhereCommand();
// Tells of the others; borrows them.
std::unique_ptr<Command> MakeHelpCommand(const Commands& commands);

// In the order in which the help lists them.
class AllCommands {
public:
    AllCommands();
    const Commands& List() const { return m_commands; }

private:
    Commands m_commands;
};
