// Why a command could not do its work on a file or an output, where the library has no failure of its own for
// it: a sentence for the user. Thrown inside the program alone; each command ends it in a report.
#pragma once

#include <stdexcept>

class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
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
