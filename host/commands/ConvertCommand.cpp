#include <algorithm>
#include <cstdio>
#include <thread>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/commands/FormatWish.h"
#include "host/convert/Batch.h"
#include "host/convert/InputList.h"
#include "host/convert/OutputPlan.h"
#include "host/convert/Shard.h"
#include "host/files/Output.h"
#include "host/tags/TagChanges.h"
#include "host/terminal/Report.h"

namespace {

struct ConvertOptions {
    std::vector<std::string> files;
    std::string list;    // a file with names of files
    std::string output;  // a file, or a folder, which several files need
    FormatWish wish;
    bool recursive = false;
    std::string shard;  // "I/N"
    bool newer = false;
    bool overwrite = false;
    bool partial = false;  // of a file that ends early what is there is enough
    bool lossy = false;    // tags that the output can't keep may change or go
    bool noChunks = false;
    bool dither = false;
    std::optional<uint64_t> seed;
    bool dryRun = false;
    bool json = false;
    // Files at once, and threads for long ones; as suits the machine where missing.
    std::optional<uint32_t> jobs;
    std::vector<std::string> sets;  // "NAME=VALUE"
};

constexpr uint32_t kMaxJobs = 256;
// Short files wait for the disk, one after the other, for longer than they need a core.
constexpr size_t kFilesPerCore = 4;

class ConvertCommand final : public Command {
public:
    ConvertCommand()
        : Command(
              {"convert",
               "Make WAV files of audio files, with their tags",
               {"Each file becomes a WAV file of one of the formats that \"vlwav formats\" lists: the "
                "nearest to "
                "its own, or what --format, --rate, --channels and --bits ask for. An output appears under "
                "its name "
                "when it is whole.",
                "Tags come along, and so do the other chunks of a file: broadcast data with its time "
                "reference at the new rate and a line of coding history more, cue points and their labels, "
                "loops, iXML, cart and ID3. What depends on the old samples goes; --verbose names it. The "
                "rates and times that iXML and cart hold stay as they are.",
                "A pipe or a device as output gets each byte as it is made. Where the input tells its length "
                "the head has it too; else both of its sizes are FFFFFFFF, and tags stand before the audio.",
                "A file that fails is named on standard error, and the others are made all the same."},
               {{"A file for a CD", "vlwav convert song.wav -o cd.wav --rate 44100 --channels 2"},
                {"All files of a folder, for a phone", "vlwav convert *.wav -o phone/ --format 2"},
                {"Between two programs", "arecord -f cd | vlwav convert - -o - --rate 8000 | aplay"}}}) {
        FormatWish& wish = m_options.wish;
        Take({"IN", "", "Audio files, and with --recursive folders; - is standard input", &m_options.files,
              Words::Files});
        Take(Option{"-o,--output", "OUT",
                    "File to write, a folder for IN's name with .wav, or - for standard output",
                    &m_options.output, Words::Files}
                 .Required());
        Take({"--recursive", "", "Take the audio files in folders too, and keep their tree",
              &m_options.recursive});
        Take({"--files-from", "LIST",
              "A file with a name of an input in each line, or names that end with a zero byte; - is "
              "standard input",
              &m_options.list, Words::Files});
        Take({"--shard", "I/N", "Of N parts of the inputs take the one with number I", &m_options.shard});
        Take({"--format", "INDEX", "Index of the format; the nearest to the source if not given", &wish.index,
              Words::Formats});
        Take(Option{"--rate", "HZ", "Frames per second", &wish.rate}.Without({"--format"}));
        Take(Option{"--channels", "COUNT", "Channels", &wish.channels}.Without({"--format"}));
        Take(Option{"--bits", "BITS", "Bits of a sample", &wish.bits}.Without({"--format"}));
        Take({"--overwrite", "", "Replace what is there already", &m_options.overwrite});
        Take({"--newer", "", "Skip inputs whose output is up to date, and replace outputs that aren't",
              &m_options.newer});
        Take({"--partial", "", "Of a file that ends early take what is there", &m_options.partial});
        Take({"--lossy", "", "Let tags change or go that can't be kept as they are", &m_options.lossy});
        Take({"--no-chunks", "", "Leave out all chunks but those of format, audio and tags",
              &m_options.noChunks});
        Take({"--dither", "", "Spread what is lost from 16 to 8 bits as noise, instead of steps",
              &m_options.dither});
        Take(Option{"--seed", "NUMBER", "Where the noise begins; the same each time if not given",
                    &m_options.seed}
                 .With({"--dither"}));
        Take({"--dry-run", "", "Tell what would be made, and make nothing", &m_options.dryRun});
        Take({"--json", "", "One JSON object at the end instead of lines", &m_options.json});
        Take(Option{"--jobs", "COUNT",
                    "Files at once, and threads for long ones; as suits the machine if not given",
                    &m_options.jobs}
                 .Within(1, kMaxJobs));
        Take({"--set", "NAME=VALUE", "A tag of the output, in place of the input's", &m_options.sets,
              Words::TagValues});
    }
    bool TakesEncoding() const override { return true; }

    ExitCode Run(Context& context) override;

private:
    void CheckStandardOutput() const;
    std::vector<ConvertJob> Plan() const;
    vlw::Conversion Wish(const Context& context, const std::vector<vlw::StockFormat>& formats) const;

    ConvertOptions m_options;
};

std::vector<ConvertJob> ConvertCommand::Plan() const {
    const ConvertOptions& options = m_options;
    if (options.files.empty() && options.list.empty())
        throw UsageFailure("No file is given: name some, or a list of them with --files-from.");
    InputList inputs;
    inputs.AddNamed(options.files, options.recursive, options.output);
    if (!options.list.empty()) inputs.AddListed(options.list, options.recursive, options.output);
    const bool several = inputs.Files().size() > 1 || options.recursive || !options.list.empty();
    std::vector<ConvertJob> jobs = OutputPlan::Make(inputs.Files(), options.output, several);
    const Shard shard(options.shard);
    std::erase_if(jobs, [&](const ConvertJob& job) { return !shard.Has(job.input); });
    return jobs;
}

vlw::Conversion ConvertCommand::Wish(const Context& context,
                                     const std::vector<vlw::StockFormat>& formats) const {
    vlw::Conversion conversion;
    ApplyWish(m_options.wish, formats, conversion);
    conversion.text = context.Text();
    conversion.flags = static_cast<vlw::Flags>(VLW_NOT_EMPTY);
    for (const auto& [wanted, flag] : {std::pair(m_options.overwrite, vlw::Flags::overwrite),
                                       {m_options.partial, vlw::Flags::partial},
                                       {m_options.lossy, vlw::Flags::lossy},
                                       {m_options.noChunks, vlw::Flags::no_chunks},
                                       {m_options.dither, static_cast<vlw::Flags>(VLW_DITHER)}})
        if (wanted) conversion.flags = conversion.flags | flag;
    return conversion;
}

void ConvertCommand::CheckStandardOutput() const {
    if (!IsStandardOutput(m_options.output)) return;
    if (m_options.json)
        throw UsageFailure("Standard output can't take both the file and --json; name a file with -o.");
    if (Output::Standard().IsTerminal())
        throw UsageFailure("A WAV file is no text for a terminal; name a file with -o or use a pipe.");
}

ExitCode ConvertCommand::Run(Context& context) {
    CheckStandardOutput();
    const TagChanges changes(m_options.sets, {});
    const vlw::Module& module = context.Module();
    const std::vector<vlw::StockFormat> formats = module.formats();
    const vlw::Conversion conversion = Wish(context, formats);
    const std::vector<ConvertJob> jobs = Plan();
    const ConversionRules rules{module,          formats,         conversion,     changes,
                                m_options.newer, context.verbose, m_options.seed, m_options.dryRun};
    const size_t cores = std::max(1u, std::thread::hardware_concurrency());
    const BatchSummary summary =
        Batch(rules, jobs, !m_options.json && !context.quiet && !IsStandardOutput(m_options.output))
            .Run(m_options.jobs.value_or(static_cast<uint32_t>(cores * kFilesPerCore)),
                 m_options.jobs.value_or(static_cast<uint32_t>(cores)));
    for (const FailedFile& failure : summary.failures) Report::Complain(failure.file, failure.error);
    if (jobs.size() > 1 || m_options.recursive || !m_options.list.empty() || summary.skipped != 0)
        Report::Note("", summary.Line());
    if (m_options.json) {
        Output output = Output::Standard();
        output.Write(summary.Json());
        output.Commit();
    }
    return summary.failures.empty() ? EXIT_DONE : EXIT_FAILED;
}

}  // namespace

std::unique_ptr<Command> MakeConvertCommand() { return std::make_unique<ConvertCommand>(); }
