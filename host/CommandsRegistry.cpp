#include <fmt/format.h>

#include <string>
#include <string_view>

#include "capi/vlwav_more.h"
#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/TerminalText.h"

namespace {

// One line on standard output.
ExitCode Tell(const std::string& line) {
    Output output = Output::Standard();
    output.Write(line + "\n");
    output.Commit();
    return EXIT_DONE;
}

void Require(const vlw::Module& module, vlw_code code) {
    if (code != VLW_OK) throw Failure(vlw_module_error(module.get())->text);
}

}  // namespace

ExitCode RunRegister(const vlw::Module& module, const RegistryOptions& options) {
    const auto enter = options.system ? &vlw_module_register_system : &vlw_module_register;
    Require(module, enter(module.get()));
    return Tell(fmt::format("registered {}", TerminalText::Printable(module.path())));
}

ExitCode RunUnregister(const vlw::Module& module, const RegistryOptions& options) {
    const auto takeOut = options.system ? &vlw_module_unregister_system : &vlw_module_unregister;
    Require(module, takeOut(module.get()));
    return Tell("unregistered");
}

// To a script the name goes as it is.
ExitCode RunWhere(const vlw::Module& module) {
    const std::string_view path = module.path();
    return Tell(Output::Standard().IsTerminal() ? TerminalText::Printable(path) : std::string(path));
}
