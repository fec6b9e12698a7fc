#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/commands/SingleFile.h"
#include "host/files/Output.h"
#include "host/files/Source.h"
#include "host/terminal/ProgressLines.h"
#include "host/terminal/Reason.h"
#include "host/terminal/Report.h"

namespace {

struct DecodeOptions {
    std::string file;
    std::optional<uint32_t> rate;      // Hz; the source's own where missing
    std::optional<uint32_t> channels;  // likewise
    std::string output = "-";          // a path, "-" is standard output
    bool overwrite = false;
    bool partial = false;  // of a file that ends early what is there is enough
};

// Hz. Below, a whole block of the source can come to less than one frame; above, nothing plays it.
constexpr uint32_t kMinRate = 1000;
constexpr uint32_t kMaxRate = 768000;
constexpr uint32_t kMaxChannels = 255;
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
    if (options.partial)
        Report::Note(options.file, Report::NoteOf(options.file, reason));
    else
        Report::Complain(options.file, AboutIt(reason, options.file));
    return options.partial ? EXIT_DONE : EXIT_FAILED;
}

ExitCode Decode(const vlw::Module& module, const DecodeOptions& options) {
    vlw::Reader reader(module);
    reader.output(options.rate.value_or(0), options.channels.value_or(0));
    Source::Open(reader, options.file);
    const int64_t promised = PromisedFrames(reader);

    Output output = Output::Named(options.output, options.file, options.overwrite);
    ProgressLines progress(1, 0);
    // What comes live goes on within 20 ms.
    auto blocks = reader.blocks(reader.seekable() ? kBlockFrames : reader.rate() / 50);
    for (const auto& block : blocks) {
        output.Write(block.data(), block.size() * sizeof *block.data());
        progress.Show(0, options.file, 0, reader.tell(), promised, reader.rate());
    }
    const bool cut = blocks.ending() == vlw::Ending::cut;
    const ExitCode code = cut ? TellCut(reader, options, output.IsFile()) : EXIT_DONE;
    if (reader.tell() == 0) throw Failure("It has no audio.");
    output.Commit();
    if (vlw_reader_length_told(reader.get()) == 0) Report::Note(options.file, Report::kNoLengthNote);
    return code;
}

class DecodeCommand final : public Command {
public:
    DecodeCommand()
        : Command({"decode",
                   "Write the audio as raw signed 16-bit little-endian PCM",
                   {"The samples of a frame follow each other; there is no head. Without -o they go to "
                    "standard output, "
                    "which has to be a pipe or a file.",
                    "Of a file that ends before the audio that its head promises, an output file isn't made "
                    "unless "
                    "--partial is given; standard output gets what is there, and the exit status is 1."},
                   {{"Listen to a file", "vlwav decode song.wav --rate 44100 --channels 2 | aplay -f cd"},
                    {"A raw file of 48 kHz in stereo",
                     "vlwav decode song.wav --rate 48000 --channels 2 -o song.raw"},
                    {"What is there of a recording that broke off",
                     "vlwav decode cut.wav --partial -o cut.raw"}}}) {
        Take(Option{"FILE", "", "Audio file; - is standard input", &m_options.file, Words::Files}.Required());
        Take(Option{"--rate", "HZ", "Frames per second; the source's own if not given", &m_options.rate}
                 .Within(kMinRate, kMaxRate));
        Take(Option{"--channels", "COUNT", "Channels; the source's own if not given", &m_options.channels}
                 .Within(1, kMaxChannels));
        Take({"-o,--output", "OUT", "File to write; - is standard output, which it is if not given",
              &m_options.output, Words::Files});
        Take({"--overwrite", "", "Replace what is there already", &m_options.overwrite});
        Take({"--partial", "", "Of a file that ends early take what is there", &m_options.partial});
    }

    ExitCode Run(Context& context) override {
        SingleFile::RequireNoScreen(m_options.output, "Raw audio");
        const vlw::Module& module = context.Module();
        return SingleFile::Do(m_options.file, [&] { return Decode(module, m_options); });
    }

private:
    DecodeOptions m_options;
};

}  // namespace

std::unique_ptr<Command> MakeDecodeCommand() { return std::make_unique<DecodeCommand>(); }
