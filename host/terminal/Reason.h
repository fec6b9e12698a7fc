// Failures as the program tells them: a sentence for people, and a word for scripts.
#pragma once

#include <exception>
#include <string>

// A sentence of the library about `file`, whose name stands before it already: it begins with `it` in its
// place.
std::string AboutIt(std::string sentence, const std::string& file, const char* it = "It");
// What went wrong with `file`, likewise.
std::string ReasonOf(const std::exception& failure, const std::string& file);
const char* WordOf(const std::exception& failure);
