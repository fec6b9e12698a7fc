#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/commands/ChannelNames.h"
#include "host/commands/Commands.h"
#include "host/commands/SingleFile.h"
#include "host/files/Output.h"
#include "host/files/Source.h"
#include "host/plot/PlotLayout.h"
#include "host/plot/PlotLibrary.h"
#include "host/terminal/ProgressLines.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"

namespace {

struct PlotOptions {
    std::string file;
    std::string output;  // a path, "-" is standard output
    std::string size;    // "1200x800"; empty: by the channels
    bool overwrite = false;
    bool partial = false;  // of a file that ends early what is there is enough
};

constexpr size_t kPlottedBlock = 16384;

struct Size {
    uint32_t width = PlotLayout::kDefaultWidth;
    uint32_t height = 0;  // 0: by the channels
};

Size SizeOf(const std::string& text) {
    Size size;
    if (text.empty()) return size;
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    const bool hasBoth = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
    const auto height = hasBoth ? std::from_chars(width.ptr + 1, end, size.height) : width;
    if (!hasBoth || height.ec != std::errc() || height.ptr != end || size.width < PlotLayout::kLeastWidth ||
        size.width > PlotLayout::kMost || size.height < PlotLayout::LeastHeight(1) ||
        size.height > PlotLayout::kMost)
        throw UsageFailure(fmt::format(
            "--size takes a width from {} and a height from {}, both to {}: {}x600.", PlotLayout::kLeastWidth,
            PlotLayout::LeastHeight(1), PlotLayout::kMost, PlotLayout::kDefaultWidth));
    return size;
}

PlotShape ShapeOf(const vlw::Reader& reader, Size size) {
    const uint32_t channels = reader.channels();
    if (size.height == 0) size.height = PlotLayout::DefaultHeight(channels);
    if (size.height < PlotLayout::LeastHeight(channels))
        throw Failure(fmt::format("Its {} channels take a height of {} at least; choose another --size.",
                                  channels, PlotLayout::LeastHeight(channels)));
    return {size.width, size.height, reader.rate(), channels};
}

std::string Title(vlw::Reader& reader, const std::string& file) {
    const vlw::Tags tags = reader.tags();
    std::string title(tags.get("title").value_or(""));
    const std::string_view artist = tags.get("artist").value_or("");
    if (!title.empty() && !artist.empty()) title.append(" — ").append(artist);
    if (title.empty())
        title = file == "-" ? "standard input" : std::filesystem::path(file).filename().string();
    return TerminalText::Printable(title);
}

std::string Subtitle(const vlw::Format& format, int64_t frames) {
    return fmt::format("{}, {} Hz, {} channel{}, {}", format.codec, format.rate, format.channels,
                       format.channels == 1 ? "" : "s", Report::Duration(frames, format.rate));
}

// Reads to the end, and returns the frames that were there.
int64_t AddAll(vlw::Reader& reader, Plot& plot, const PlotOptions& options) {
    const int64_t total = reader.frames().value_or(0);
    ProgressLines progress(1, 0);
    auto blocks = reader.blocks(kPlottedBlock);
    for (const auto& block : blocks) {
        if (!plot.Add(block.data(), block.frames())) throw std::bad_alloc();
        progress.Show(0, options.file, 0, reader.tell(), total, reader.rate());
    }
    if (blocks.ending() == vlw::Ending::cut) {
        const std::string reason = vlw_reader_error(reader.get())->text;
        if (!options.partial) throw Failure(reason + Report::kPartialHint);
        Report::Note(options.file, Report::NoteOf(options.file, reason));
    }
    if (reader.tell() == 0) throw Failure("It has no audio.");
    if (vlw_reader_length_told(reader.get()) == 0) Report::Note(options.file, Report::kNoLengthNote);
    return reader.tell();
}

void Draw(const vlw::Module& module, const PlotOptions& options, const Size& size) {
    vlw::Reader reader(module);
    Source::Open(reader, options.file);
    std::vector<std::string> names = ChannelNames(reader.format());
    if (names.size() > PlotLayout::kMostChannels) {
        reader.output(0, 1);
        Report::Note(options.file, fmt::format("Note: the mean of its {} channels is drawn.", names.size()));
        names = {"mean of all channels"};
    }
    const PlotShape shape = ShapeOf(reader, size);
    const auto plot = PlotLibrary::NewPlot(shape);
    Output output = Output::Named(options.output, options.file, options.overwrite);

    const int64_t frames = AddAll(reader, *plot, options);
    const std::string title = Title(reader, options.file);
    const std::string subtitle = Subtitle(reader.format(), frames);
    std::vector<const char*> labels(names.size());
    std::transform(names.begin(), names.end(), labels.begin(),
                   [](const std::string& name) { return name.c_str(); });
    output.Write(PlotLibrary::Draw(*plot, {title.c_str(), subtitle.c_str(), labels.data()}));
    output.Commit();
}

class PlotCommand final : public Command {
public:
    PlotCommand()
        : Command(
              {"plot",
               "Draw waveform and spectrogram of a file as a PNG picture",
               {"For each channel the samples over time, where 1 is full scale, and below them how loud each "
                "frequency is, from 0 dBFS, a sine of full scale, down to -120. A column shows the least and "
                "the most sample of its time and the loudest of each frequency, so that a click is seen in "
                "an hour too. Lightness alone tells the order of the colours.",
                "The title is that of the tags, with the artist, else the name of the file. More than eight "
                "channels are drawn as one, their mean.",
                "The spectrum is that of windows of about 40 ms (Hann, 1024 to 4096 frames). Of a file that "
                "ends before the audio that its head promises a picture is made with --partial alone."},
               {{"A picture of a song", "vlwav plot song.wav -o song.png"},
                {"As wide as a screen", "vlwav plot song.wav -o song.png --size 1920x1080 --overwrite"},
                {"Into another program", "vlwav plot song.wav -o - | display"}}}) {
        Take(Option{"FILE", "", "Audio file; - is standard input", &m_options.file, Words::Files}.Required());
        Take(Option{"-o,--output", "PICTURE", "File to write, - is standard output", &m_options.output,
                    Words::Files}
                 .Required());
        Take({"--size", "WxH",
              "Of the picture in pixels; 1200 wide and as high as its channels need if not given",
              &m_options.size});
        Take({"--overwrite", "", "Replace what is there already", &m_options.overwrite});
        Take({"--partial", "", "Of a file that ends early take what is there", &m_options.partial});
    }

    ExitCode Run(Context& context) override {
        SingleFile::RequireNoScreen(m_options.output, "A picture");
        const Size size = SizeOf(m_options.size);
        const vlw::Module& module = context.Module();
        return SingleFile::Do(m_options.file, [&] {
            Draw(module, m_options, size);
            return EXIT_DONE;
        });
    }

private:
    PlotOptions m_options;
};

}  // namespace

std::unique_ptr<Command> MakePlotCommand() { return std::make_unique<PlotCommand>(); }
