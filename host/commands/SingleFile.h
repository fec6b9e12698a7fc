// What commands have in common that make one output of one file.
#pragma once

#include <exception>
#include <string>

#include "host/base/ExitCodes.h"
#include "host/base/Failure.h"
#include "host/files/Output.h"
#include "host/terminal/Report.h"

namespace SingleFile {

// Bytes that are no text don't go to a screen. Throws UsageFailure that begins with what they are.
inline void RequireNoScreen(const std::string& output, const std::string& what) {
    if (output == "-" && Output::Standard().IsTerminal())
        throw UsageFailure(what + " is no text for a terminal; name a file with -o or use a pipe.");
}

// What `work` returns, or EXIT_FAILED for what it throws, told with the file's name. Throws OutputFailure.
template <class Work>
ExitCode Do(const std::string& file, Work&& work) {
    try {
        return work();
    } catch (const OutputFailure&) {
        throw;
    } catch (const std::exception& failure) {
        Report::Complain(file, failure);
        return EXIT_FAILED;
    }
}

}  // namespace SingleFile
