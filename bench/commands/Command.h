// A command, run as a user would.
#pragma once

#include <string>
#include <vector>

struct CommandUse {
    bool succeeded = false;
    double processor = 0;  // seconds, of all its processes
    double wall = 0;       // seconds
};

// Its output is thrown away.
CommandUse RunCommand(const std::vector<std::string>& words);
// The most memory that its own process had, in MiB, looked at every millisecond; 0 where it fails. What the
// system tells of an ended process wouldn't do: that begins with the memory of the one which started it.
double PeakMemory(const std::vector<std::string>& words);
// Whether there is a program of this name.
bool HasProgram(const std::string& name);
