// vlwav, the module's host on the command line.

#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>

#include "host/base/Failure.h"
#include "host/cli/CommandLine.h"
#include "host/commands/Commands.h"
#include "host/files/Output.h"
#include "host/files/Signals.h"
#include "host/terminal/Report.h"

namespace {

int RunOrTell(int argc, char** argv) {
    try {
        Signals::Watch();
        Context context;
        const AllCommands commands;
        Command* const command = CommandLine(commands.List(), context).Parse(argc, argv);
        if (context.quiet) Report::OnlyFailures();
        return command ? command->Run(context) : EXIT_DONE;
    } catch (const UsageFailure& failure) {
        Report::Complain("", failure);
        return EXIT_USAGE;
    } catch (const std::exception& failure) {
        Report::Complain("", failure);
        return EXIT_FAILED;
    }
}

}  // namespace

int main(int argc, char** argv) {
    HoldStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);  // a reader that went away is a failed write, told as one
    std::signal(SIGXFSZ, SIG_IGN);  // so is a file that may not grow
    const int code = RunOrTell(argc, argv);
    // What other libraries do at the end of a process needs memory, and without any the loader ends the
    // process by a number of its own.
    constexpr size_t kEnough = 65536;
    void* const memory = ::operator new(kEnough, std::nothrow);
    if (!memory) std::_Exit(code);
    ::operator delete(memory);
    return code;
}
