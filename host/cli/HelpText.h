// What --help shows, from the tables of the commands. Lines of at most 80 columns.
#pragma once

#include <string>

#include "host/cli/CommandLine.h"

namespace HelpText {

constexpr size_t kColumns = 80;

// Text of words in lines of so many columns. All texts of the tables are ASCII. The first line goes on at
// `column`, the others begin at `indent`.
std::string Wrapped(const std::string& text, size_t column, size_t indent, size_t columns = kColumns);

// Of the program: its commands, and the options that all of them take.
std::string OfProgram(const Commands& commands, const std::vector<Option>& common);
// Of one command.
std::string Of(const Command& command, const std::vector<Option>& common);
// How it is called, after the program's name: "convert [OPTION]... IN...".
std::string Synopsis(const Command& command);
// An option as help and manual spell it: "-o, --output OUT".
std::string Spelling(const Option& option);
// What it takes, in words: "jpg or bmp", "from 1 to 255"; empty where anything goes.
std::string Range(const Option& option);

}  // namespace HelpText
