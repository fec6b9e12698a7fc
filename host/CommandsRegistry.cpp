#include <fmt/format.h>

#include <filesystem>

#include "capi/RegisteredModule.h"
#include "host/Commands.h"
#include "host/Output.h"
#include "host/Report.h"
#include "platform/base/LastError.h"

namespace {

// One line on standard output.
ExitCode Tell(const std::string& line) {
    Output output = Output::Standard();
    output.Write(line + "\n");
    output.Commit();
    return EXIT_DONE;
}

}  // namespace

// The module's exports tell nobody what came of it, so the registry is asked.

ExitCode RunRegister(const Module& module) {
    module.Register();
    std::string path;
    ReadRegisteredModule(path);
    std::error_code ignored;
    if (!std::filesystem::equivalent(path, module.Path(), ignored))
        throw Failure("The registry could not be written.");
    return Tell("registered " + Report::Printable(path));
}

ExitCode RunUnregister(const Module& module) {
    module.Unregister();
    std::string path;
    const auto found = static_cast<DWORD>(ReadRegisteredModule(path));
    if (found != ERROR_FILE_NOT_FOUND && found != ERROR_PATH_NOT_FOUND)
        throw Failure("The registry could not be written.");
    return Tell("unregistered");
}

ExitCode RunWhere(const Module& module) { return Tell(module.Path()); }
