#include <fmt/format.h>

#include "host/AudioCopy.h"
#include "host/Commands.h"
#include "host/Output.h"
#include "host/Progress.h"
#include "host/Report.h"

namespace {

Output OpenOutput(const DecodeOptions& options) {
    Output output = options.output == "-" ? Output::Standard() : Output::File(options.output);
    if (output.IsSameFile(options.file))
        throw OutputFailure("The output is the input itself; choose another name for -o.");
    return output;
}

int64_t Write(Source& source, uint32_t channels, int64_t promised, Output& output) {
    Progress progress(promised);
    int64_t done = 0;
    return CopyAudio(source, channels, [&](const int16_t* samples, uint32_t frames) {
        output.Write(samples, size_t{frames} * channels * sizeof *samples);
        progress.Show(done += frames);
    });
}

void Decode(const Module& module, const DecodeOptions& options) {
    Source source(module, options.file);
    const uint32_t channels = options.channels.value_or(source.Format().channels);
    const uint32_t rate = options.rate.value_or(source.Format().rate);
    source.SetOutput(channels, rate);
    const int64_t promised = source.Length();

    Output output = OpenOutput(options);
    const int64_t total = Write(source, channels, promised, output);
    output.Commit();
    WarnIfShort(options.file, source.Format(), rate, promised, total);
}

}  // namespace

ExitCode RunDecode(const Module& module, const DecodeOptions& options) {
    if (options.output == "-" && Output::Standard().IsTerminal()) {
        Report::Complain("", "Raw audio is no text for a terminal; name a file with -o or use a pipe.");
        return EXIT_USAGE;
    }
    try {
        Decode(module, options);
        return EXIT_DONE;
    } catch (const OutputFailure&) {
        throw;
    } catch (const Failure& failure) {
        Report::Complain(options.file, failure.what());
        return EXIT_FAILED;
    }
}
