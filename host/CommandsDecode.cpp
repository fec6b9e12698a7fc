#include "capi/vlwav_more.h"
#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/Progress.h"
#include "host/Report.h"

namespace {

constexpr size_t kBlockFrames = 16384;

// Of the source, as output frames.
int64_t PromisedFrames(const vlw::Reader& reader) {
    const vlw::Format format = reader.format();
    const double promised = static_cast<double>(format.frames_promised.value_or(format.frames.value_or(0)));
    return static_cast<int64_t>(promised * reader.rate() / format.rate);
}

// Standard output has had the bytes, so there a file that ends early is told; a file isn't made of it.
ExitCode TellCut(const vlw::Reader& reader, const DecodeOptions& options, bool isFile) {
    const std::string reason = vlw_reader_error(reader.get())->text;
    if (!options.partial && isFile) throw Failure(reason + Report::kPartialHint);
    Report::Complain(options.file, (options.partial ? "Note: " : "") + reason);
    return options.partial ? EXIT_DONE : EXIT_FAILED;
}

ExitCode Decode(const vlw::Module& module, const DecodeOptions& options) {
    vlw::Reader reader(module);
    reader.output(options.rate.value_or(0), options.channels.value_or(0));
    reader.open(options.file);
    const int64_t promised = PromisedFrames(reader);

    Output output = Output::Named(options.output, options.file, options.overwrite);
    Progress progress(promised);
    auto blocks = reader.blocks(kBlockFrames);
    for (const auto& block : blocks) {
        output.Write(block.data(), block.size() * sizeof *block.data());
        progress.Show(reader.tell());
    }
    const bool cut = blocks.ending() == vlw::Ending::cut;
    const ExitCode code = cut ? TellCut(reader, options, output.IsFile()) : EXIT_DONE;
    if (reader.tell() == 0) throw Failure("It has no audio.");
    output.Commit();
    if (vlw_reader_length_told(reader.get()) == 0) Report::Complain(options.file, Report::kNoLengthNote);
    return code;
}

}  // namespace

ExitCode RunDecode(const vlw::Module& module, const DecodeOptions& options) {
    if (options.output == "-" && Output::Standard().IsTerminal()) {
        Report::Complain("", "Raw audio is no text for a terminal; name a file with -o or use a pipe.");
        return EXIT_USAGE;
    }
    try {
        return Decode(module, options);
    } catch (const OutputFailure&) {
        throw;
    } catch (const std::exception& failure) {
        Report::Complain(options.file, failure);
        return EXIT_FAILED;
    }
}
