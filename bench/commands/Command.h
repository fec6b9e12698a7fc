// A command, run as a user would.
#pragma once

#include <string>
#include <vector>

struct CommandUse {
    bool succeeded = false;
    double processor = 0;  // seconds, of all its processes
    double wall = 0;       // seconds
    double peak = 0;       // MiB of the largest of them
};

// Its output is thrown away.
CommandUse RunCommand(const std::vector<std::string>& words);
// Whether there is a program of this name.
bool HasProgram(const std::string& name);
