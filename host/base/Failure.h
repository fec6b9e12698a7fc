// Why a command could not do its work on a file or an output, where the library has no failure of its own for
// it: a sentence for the user. Thrown inside the program alone; each command ends it in a report.
#pragma once

#include <stdexcept>
#include <string>

class Failure : public std::runtime_error {
public:
    // `word` is the reason for scripts, and lives as long as the program.
    explicit Failure(const std::string& sentence, const char* word = "failed")
        : std::runtime_error(sentence), m_word(word) {}

    const char* Word() const noexcept { return m_word; }

private:
    const char* m_word;
};

// The program's own output failed: nothing that follows could be delivered, so a command stops at once.
class OutputFailure : public Failure {
public:
    using Failure::Failure;
};

// The command line asks for something that can't be; nothing has been touched.
class UsageFailure : public Failure {
public:
    using Failure::Failure;
};
