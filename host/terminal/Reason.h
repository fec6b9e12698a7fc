// Failures as the program tells them: a sentence for people, and a word for scripts.
#pragma once

#include <exception>
#include <string>

// What went wrong with `file`, whose name stands before it already.
std::string ReasonOf(const std::exception& failure, const std::string& file);
const char* WordOf(const std::exception& failure);
