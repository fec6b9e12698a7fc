// Why a command could not do its work on a file or an output: a sentence for the user and, where the module
// gave one, its result code. Thrown inside the host alone; each command ends it in a report.
#pragma once

#include <stdexcept>
#include <string>

#include "AudioCodec/shell/object/ResultCodes.h"

class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& sentence, Result code = RESULT_FAILED)
        : std::runtime_error(sentence), m_code(code) {}
    // The module's code; RESULT_FAILED where the reason lies outside the module.
    Result Code() const { return m_code; }

private:
    Result m_code;
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
