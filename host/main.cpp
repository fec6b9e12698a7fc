// vlwav, the module's host on the command line: argument parsing, and nothing else.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <functional>
#include <sstream>

#include "host/Commands.h"
#include "host/Output.h"
#include "host/Report.h"

namespace {

// Hz. Below, a whole block of the source can come to less than one frame; above, nothing plays it.
constexpr uint32_t kMinRate = 1000;
constexpr uint32_t kMaxRate = 768000;
constexpr uint32_t kMaxChannels = 255;

struct CommonOptions {
    std::string module;
    bool verbose = false;
};

Module LoadModule(const CommonOptions& options, Module::Search search) {
    Module module(options.module, search);
    if (options.verbose)
        Report::Complain(
            "", std::string("module found ") + module.Origin() + ": " + Report::Printable(module.Path()));
    return module;
}

CLI::App* AddInfo(CLI::App& app, InfoOptions& options) {
    CLI::App* info = app.add_subcommand("info", "Tell format and length of audio files");
    info->add_option("FILE", options.files, "Audio files")->required();
    info->add_flag("--json", options.json, "One JSON array instead of lines");
    return info;
}

CLI::App* AddDecode(CLI::App& app, DecodeOptions& options) {
    CLI::App* decode = app.add_subcommand("decode", "Write the audio as raw signed 16-bit little-endian PCM");
    decode->add_option("FILE", options.file, "Audio file")->required();
    decode->add_option("--rate", options.rate, "Frames per second; the source's own if not given")
        ->check(CLI::Range(kMinRate, kMaxRate));
    decode->add_option("--channels", options.channels, "Channels; the source's own if not given")
        ->check(CLI::Range(uint32_t{1}, kMaxChannels));
    decode->add_option("-o,--output", options.output, "File to write, - is standard output")
        ->capture_default_str();
    return decode;
}

struct RegistryCommands {
    explicit RegistryCommands(CLI::App& app)
        : enter(app.add_subcommand("register", "Enter the module beside this program into the registry")),
          leave(app.add_subcommand("unregister", "Take the module out of the registry")),
          where(app.add_subcommand("where", "Tell which module the other commands take")) {}

    const CLI::App* enter;
    const CLI::App* leave;
    const CLI::App* where;
};

// --help and --version too are output that can fail; all else that parsing ends with is wrong usage.
ExitCode TellParseEnd(const CLI::App& app, const CLI::ParseError& end) {
    std::ostringstream out;
    std::ostringstream err;
    const int code = app.exit(end, out, err);
    Output output = Output::Standard();
    if (!out.str().empty()) output.Write(out.str());
    if (code == 0) output.Commit();
    std::fputs(err.str().c_str(), stderr);
    return code == 0 ? EXIT_DONE : EXIT_USAGE;
}

ExitCode Run(int argc, char** argv) {
    CLI::App app("Reads WAV files through the codec module VlACWav3.", "vlwav");
    app.set_version_flag("--version", "vlwav " VLWAV_VERSION);
    app.require_subcommand(1);
    app.fallthrough();  // the common options may stand behind the command as well
    CommonOptions common;
    app.add_option("--module", common.module,
                   "The module's file, instead of the registered one or that beside this program");
    app.add_flag("--verbose", common.verbose, "Say which module was loaded");

    InfoOptions infoOptions;
    DecodeOptions decodeOptions;
    const CLI::App* info = AddInfo(app, infoOptions);
    AddDecode(app, decodeOptions);
    const RegistryCommands registry(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        return TellParseEnd(app, end);
    }
    // What is to be registered isn't looked for in the registry.
    const Module module = LoadModule(
        common, registry.enter->parsed() ? Module::Search::BesideProgram : Module::Search::RegistryFirst);
    if (registry.enter->parsed()) return RunRegister(module);
    if (registry.leave->parsed()) return RunUnregister(module);
    if (registry.where->parsed()) return RunWhere(module);
    return info->parsed() ? RunInfo(module, infoOptions) : RunDecode(module, decodeOptions);
}

}  // namespace

int main(int argc, char** argv) {
    HoldStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);  // a reader that went away is a failed write, told as one
    try {
        return Run(argc, argv);
    } catch (const std::exception& failure) {
        Report::Complain("", failure.what());
        return EXIT_FAILED;
    }
}
