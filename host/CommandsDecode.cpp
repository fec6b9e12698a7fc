#include <fmt/format.h>

#include "host/Commands.h"
#include "host/Output.h"
#include "host/Progress.h"
#include "host/Report.h"

namespace {

constexpr size_t kBlockFrames = 16384;
// A converter may round its last frames away, never more than its filter is long (in source frames).
constexpr int64_t kFilterFrames = 64;

// Gives the frames written.
int64_t Copy(Source& source, uint32_t channels, int64_t promised, Output& output) {
    std::vector<int16_t> block(kBlockFrames * channels);
    Progress progress(promised);
    int64_t total = 0;
    while (const uint32_t frames = source.Read(block)) {  // fewer than asked for is no end
        output.Write(block.data(), size_t{frames} * channels * sizeof(int16_t));
        total += frames;
        progress.Show(total);
    }
    return total;
}

void WarnIfShort(const DecodeOptions& options, const SourceFormat& source, uint32_t rate, int64_t promised,
                 int64_t total) {
    const int64_t rounding = 1 + kFilterFrames * rate / source.rate;
    if (total + rounding >= promised || rate == 0) return;
    Report::Complain(
        options.file,
        fmt::format("Warning: the file seems cut off, {} of the promised {} frames came.", total, promised));
}

Output OpenOutput(const DecodeOptions& options) {
    Output output = options.output == "-" ? Output::Standard() : Output::File(options.output);
    if (output.IsSameFile(options.file))
        throw OutputFailure("The output is the input itself; choose another name for -o.");
    return output;
}

void Decode(const Module& module, const DecodeOptions& options) {
    Source source(module, options.file);
    const uint32_t channels = options.channels.value_or(source.Format().channels);
    const uint32_t rate = options.rate.value_or(source.Format().rate);
    source.SetOutput(channels, rate);
    const int64_t promised = source.Length();

    Output output = OpenOutput(options);
    const int64_t total = Copy(source, channels, promised, output);
    output.Commit();
    WarnIfShort(options, source.Format(), rate, promised, total);
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
