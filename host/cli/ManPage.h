// Pages of the manual, from the tables of the commands.
#pragma once

#include <string>

#include "host/cli/CommandLine.h"

namespace ManPage {

// In the language of man(7). `version` is the program's.
std::string OfProgram(const Commands& commands, const std::vector<Option>& common,
                      const std::string& version);
std::string Of(const Command& command, const std::vector<Option>& common, const std::string& version);

}  // namespace ManPage
