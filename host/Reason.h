// Failures as the program tells them: a sentence for people, and a number for scripts, which is that of the
// codec module's results.
#pragma once

#include <exception>
#include <string>

// What went wrong with `file`, whose name stands before it already.
std::string ReasonOf(const std::exception& failure, const std::string& file);
int NumberOf(const std::exception& failure);
