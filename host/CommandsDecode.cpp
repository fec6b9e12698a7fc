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

void Decode(const vlw::Module& module, const DecodeOptions& options) {
    vlw::Reader reader(module);
    reader.output(options.rate.value_or(0), options.channels.value_or(0));
    reader.open(options.file);
    const int64_t promised = PromisedFrames(reader);

    Output output = Output::Named(options.output, options.file);
    Progress progress(promised);
    auto blocks = reader.blocks(kBlockFrames);
    for (const auto& block : blocks) {
        output.Write(block.data(), block.size() * sizeof *block.data());
        progress.Show(reader.tell());
    }
    output.Commit();
    if (blocks.ending() == vlw::Ending::cut) Report::ComplainOfCut(options.file, reader.tell(), promised);
}

}  // namespace

ExitCode RunDecode(const vlw::Module& module, const DecodeOptions& options) {
    if (options.output == "-" && Output::Standard().IsTerminal()) {
        Report::Complain("", "Raw audio is no text for a terminal; name a file with -o or use a pipe.");
        return EXIT_USAGE;
    }
    try {
        Decode(module, options);
        return EXIT_DONE;
    } catch (const OutputFailure&) {
        throw;
    } catch (const std::exception& failure) {
        Report::Complain(options.file, failure);
        return EXIT_FAILED;
    }
}
