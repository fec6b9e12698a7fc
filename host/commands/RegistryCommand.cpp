#include <fmt/format.h>

#include <string>
#include <string_view>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/files/Output.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"

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

const Example kForAll = {"For all users of the machine", "sudo vlwav register --system"};

class RegisterCommand final : public Command {
public:
    RegisterCommand()
        : Command({"register",
                   "Enter the module beside this program into the registry",
                   {"Programs that ask the registry for a codec module find it there from then on. The "
                    "module that was "
                    "registered before is taken out."},
                   {{"For the user", "vlwav register"},
                    kForAll,
                    {"Another module", "vlwav register --module /opt/codec/VlACWav3.so"}}}) {
        Take({"--system", "", "The registry of all users, which takes root's rights", &m_system});
    }

    // What is to be registered isn't looked for in the registry.
    ExitCode Run(Context& context) override {
        const vlw::Module& module = context.Module(Search::BesideProgram);
        const auto enter = m_system ? &vlw_module_register_system : &vlw_module_register;
        Require(module, enter(module.get()));
        return Tell(fmt::format("registered {}", TerminalText::Printable(module.path())));
    }

private:
    bool m_system = false;
};

class UnregisterCommand final : public Command {
public:
    UnregisterCommand()
        : Command(
              {"unregister",
               "Take the module out of the registry",
               {"What the registry of all users has is found again afterwards, where a user takes out an "
                "entry of the own one, and after both what a package brings; that goes with the package."},
               {{"For the user", "vlwav unregister"},
                {"For all users of the machine", "sudo vlwav unregister --system"},
                {"What is found then", "vlwav unregister && vlwav where"}}}) {
        Take({"--system", "", "The registry of all users, which takes root's rights", &m_system});
    }

    ExitCode Run(Context& context) override {
        const vlw::Module& module = context.Module();
        const auto takeOut = m_system ? &vlw_module_unregister_system : &vlw_module_unregister;
        Require(module, takeOut(module.get()));
        const ExitCode code = Tell("unregistered");
        vlw::Module next;
        if (vlw_module_load(next.get(), nullptr) == VLW_OK &&
            vlw_module_found(next.get()) == VLW_FOUND_BY_REGISTRY)
            Report::Note("", "another registry still names " + std::string(next.path()));
        return code;
    }

private:
    bool m_system = false;
};

class WhereCommand final : public Command {
public:
    WhereCommand()
        : Command({"where",
                   "Tell which module the other commands take",
                   {"The registered one, or that beside this program where none is registered."},
                   {{"Its path", "vlwav where"},
                    {"With how it was found", "vlwav where --verbose"},
                    {"Its size", "ls -l \"$(vlwav where)\""}}}) {}

    // To a script the name goes as it is.
    ExitCode Run(Context& context) override {
        const std::string_view path = context.Module().path();
        return Tell(Output::Standard().IsTerminal() ? TerminalText::Printable(path) : std::string(path));
    }
};

}  // namespace

std::unique_ptr<Command> MakeRegisterCommand() { return std::make_unique<RegisterCommand>(); }
std::unique_ptr<Command> MakeUnregisterCommand() { return std::make_unique<UnregisterCommand>(); }
std::unique_ptr<Command> MakeWhereCommand() { return std::make_unique<WhereCommand>(); }
