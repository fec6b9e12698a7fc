// What shells complete, from the tables of the commands: their names and options, the values of an option,
// formats, names of tags, files.
#pragma once

#include <string>

#include "host/cli/CommandLine.h"

namespace Completion {

std::string Bash(const Commands& commands, const std::vector<Option>& common);
std::string Zsh(const Commands& commands, const std::vector<Option>& common);
std::string Fish(const Commands& commands, const std::vector<Option>& common);

}  // namespace Completion
