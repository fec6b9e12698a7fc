// vlwav, the module's host on the command line: argument parsing, and nothing else.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <functional>
#include <new>
#include <sstream>

#include "capi/vlwav_more.h"
#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/Report.h"
#include "host/Signals.h"
#include "host/TerminalText.h"

namespace {

// Hz. Below, a whole block of the source can come to less than one frame; above, nothing plays it.
constexpr uint32_t kMinRate = 1000;
constexpr uint32_t kMaxRate = 768000;
constexpr uint32_t kMaxChannels = 255;
constexpr uint32_t kMaxJobs = 256;

struct CommonOptions {
    std::string module;
    bool verbose = false;
};

// Where a module is looked for when the user names none.
enum class Search { RegistryFirst, BesideProgram };

constexpr const char* kOrigins[] = {"", "by --module", "by the registry", "beside the program"};

vlw::Module LoadModule(const CommonOptions& options, Search search) {
    vlw::Module module;
    vlw_code code = VLW_OK;
    if (!options.module.empty() || search == Search::RegistryFirst)
        code = vlw_module_load(module.get(), options.module.empty() ? nullptr : options.module.c_str());
    else
        code = vlw_module_load_beside(module.get());
    if (code != VLW_OK)
        throw Failure(std::string(vlw_module_error(module.get())->text) + " Name another with --module.");
    if (options.verbose)
        Report::Complain(
            "", fmt::format("module found {}: {}", kOrigins[vlw_module_found(module.get())], module.path()));
    return module;
}

CLI::App* AddInfo(CLI::App& app, InfoOptions& options) {
    CLI::App* info = app.add_subcommand("info", "Tell format and length of audio files");
    info->add_option("FILE", options.files, "Audio files")->required();
    info->add_flag("--json", options.json, "One JSON array instead of lines");
    return info;
}

void AddOverwrite(CLI::App* command, bool& overwrite) {
    command->add_flag("--overwrite", overwrite, "Replace what is there already");
}

void AddPartial(CLI::App* command, bool& partial) {
    command->add_flag("--partial", partial, "Of a file that ends early take what is there");
}

void AddLossy(CLI::App* command, bool& lossy) {
    command->add_flag("--lossy", lossy, "Let tags change or go that can't be kept as they are");
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
    AddOverwrite(decode, options.overwrite);
    AddPartial(decode, options.partial);
    return decode;
}

// An option that may come again; each time it takes one value, so that files may follow it.
CLI::Option* AddRepeatable(CLI::App* command, const std::string& name, std::vector<std::string>& values,
                           const std::string& help) {
    return command->add_option(name, values, help)->expected(1)->take_all()->allow_extra_args(false);
}

CLI::App* AddFormats(CLI::App& app, FormatsOptions& options) {
    CLI::App* formats = app.add_subcommand("formats", "List the formats that can be written");
    formats->add_option("--language", options.language, "Of the texts: a tag like fr or pt-BR, or a number");
    formats->add_flag("--json", options.json, "One JSON array instead of a table");
    return formats;
}

CLI::App* AddConvert(CLI::App& app, ConvertOptions& options) {
    CLI::App* convert = app.add_subcommand("convert", "Make WAV files of audio files, with their tags");
    convert->add_option("IN", options.files, "Audio files")->required();
    convert->add_option("-o,--output", options.output, "File to write, or a folder for IN's name with .wav")
        ->required();
    auto* format = convert->add_option("--format", options.wish.index,
                                       "Index of the format; the nearest to the source if not given");
    convert->add_option("--rate", options.wish.rate, "Frames per second")->excludes(format);
    convert->add_option("--channels", options.wish.channels, "Channels")->excludes(format);
    convert->add_option("--bits", options.wish.bits, "Bits of a sample")->excludes(format);
    AddOverwrite(convert, options.overwrite);
    AddPartial(convert, options.partial);
    AddLossy(convert, options.lossy);
    convert
        ->add_option("--jobs", options.jobs,
                     "Files at once, and threads for long ones; as suits the machine if not given")
        ->check(CLI::Range(uint32_t{1}, kMaxJobs));
    AddRepeatable(convert, "--set", options.sets, "NAME=VALUE: a tag of the output, in place of the input's");
    return convert;
}

CLI::App* AddTag(CLI::App& app, TagOptions& options) {
    CLI::App* tag = app.add_subcommand("tag", "Show or change the tags of WAV files");
    tag->add_option("FILE", options.files, "WAV files")->required();
    AddRepeatable(tag, "--set", options.sets, "NAME=VALUE: a tag to set; the others stay");
    AddRepeatable(tag, "--clear", options.clears, "NAME: a tag to take away");
    AddLossy(tag, options.lossy);
    tag->add_flag("--json", options.json, "One JSON array instead of lines");
    return tag;
}

CLI::App* AddPicture(CLI::App& app, PictureOptions& options) {
    CLI::App* picture =
        app.add_subcommand("picture", "Write an image file as hosts get it from the metadata");
    picture->add_option("FILE", options.file, "Image file")->required();
    picture->add_option("--to", options.format, "Decode it and write it anew; as it is if not given")
        ->check(CLI::IsMember({"jpg", "bmp"}));
    picture->add_option("-o,--output", options.output, "File to write, - is standard output")->required();
    AddOverwrite(picture, options.overwrite);
    return picture;
}

CLI::App* AddRegistry(CLI::App& app, const char* name, const char* help, RegistryOptions& options) {
    CLI::App* command = app.add_subcommand(name, help);
    command->add_flag("--system", options.system, "The registry of all users, which takes root's rights");
    return command;
}

// --help and --version too are output that can fail; all else that parsing ends with is wrong usage.
ExitCode TellParseEnd(const CLI::App& app, const CLI::ParseError& end) {
    std::ostringstream out;
    std::ostringstream err;
    out.exceptions(std::ios::badbit);
    err.exceptions(std::ios::badbit);
    const int code = app.exit(end, out, err);
    Output output = Output::Standard();
    if (!out.str().empty()) output.Write(out.str());
    if (code == 0) output.Commit();
    std::fputs(err.str().c_str(), stderr);
    return code == 0 ? EXIT_DONE : EXIT_USAGE;
}

ExitCode Run(int argc, char** argv) {
    CLI::App app("Reads, writes and tags WAV files through the codec module VlACWav3.", "vlwav");
    app.set_version_flag("--version", "vlwav " VLWAV_VERSION);
    app.require_subcommand(1);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return TerminalText::Printable(error.what()) + "\nRun with --help for more information.\n";
    });
    app.fallthrough();  // the common options may stand after the command as well
    CommonOptions common;
    app.add_option("--module", common.module,
                   "The module's file, instead of the registered one or that beside this program");
    app.add_flag("--verbose", common.verbose, "Say which module was loaded");

    InfoOptions infoOptions;
    DecodeOptions decodeOptions;
    FormatsOptions formatsOptions;
    ConvertOptions convertOptions;
    TagOptions tagOptions;
    PictureOptions pictureOptions;
    RegistryOptions registryOptions;
    const struct {
        const CLI::App* command;
        std::function<ExitCode(const vlw::Module&)> run;
        Search search = Search::RegistryFirst;
    } commands[] = {
        {AddInfo(app, infoOptions), [&](const vlw::Module& module) { return RunInfo(module, infoOptions); }},
        {AddDecode(app, decodeOptions),
         [&](const vlw::Module& module) { return RunDecode(module, decodeOptions); }},
        {AddFormats(app, formatsOptions),
         [&](const vlw::Module& module) { return RunFormats(module, formatsOptions); }},
        {AddConvert(app, convertOptions),
         [&](const vlw::Module& module) { return RunConvert(module, convertOptions); }},
        {AddTag(app, tagOptions), [&](const vlw::Module& module) { return RunTag(module, tagOptions); }},
        {AddPicture(app, pictureOptions),
         [&](const vlw::Module& module) { return RunPicture(module, pictureOptions); }},
        // What is to be registered isn't looked for in the registry.
        {AddRegistry(app, "register", "Enter the module beside this program into the registry",
                     registryOptions),
         [&](const vlw::Module& module) { return RunRegister(module, registryOptions); },
         Search::BesideProgram},
        {AddRegistry(app, "unregister", "Take the module out of the registry", registryOptions),
         [&](const vlw::Module& module) { return RunUnregister(module, registryOptions); }},
        {app.add_subcommand("where", "Tell which module the other commands take"), RunWhere},
    };
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        return TellParseEnd(app, end);
    }
    for (const auto& [command, run, search] : commands)
        if (command->parsed()) return run(LoadModule(common, search));
    return EXIT_USAGE;
}

int RunOrTell(int argc, char** argv) {
    try {
        Signals::Watch();
        return Run(argc, argv);
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
