#include <nlohmann/json.hpp>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/files/Output.h"
#include "host/files/Source.h"
#include "host/info/FileFacts.h"
#include "host/info/InfoText.h"
#include "host/terminal/Report.h"

namespace {

// Lines for people, each at once where one is looking on, else many in one write.
class HeldLines {
public:
    explicit HeldLines(Output& output) : m_output(output), m_most(output.IsTerminal() ? 0 : kHeldMost) {}

    void Write(const std::string& lines) {
        m_held += lines;
        if (m_held.size() > m_most) Flush();
    }
    void Flush() {
        if (!m_held.empty()) m_output.Write(m_held);
        m_held.clear();
    }

private:
    static constexpr size_t kHeldMost = 16384;  // bytes

    Output& m_output;
    const size_t m_most;
    std::string m_held;
};

class InfoCommand final : public Command {
public:
    InfoCommand()
        : Command({"info",
                   "Tell what audio files are",
                   {"Tells the codec and the container, the rate, the channels and the speakers they are "
                    "for, the length as it is there, and the tags. "
                    "A file that holds less than its head promises is told with both lengths. A file that "
                    "can't be read is named on standard error, with the kind that it is of where that "
                    "is known, and the others are told all the same.",
                    "Some codecs tell their length only to who decodes them, and --peak needs every sample: "
                    "such a file is read to its end. What comes in order, from a pipe, is kept in a "
                    "temporary file until it has been told."},
                   {{"One file", "vlwav info song.wav"},
                    {"The seconds of all files of a folder",
                     "vlwav info --json *.wav | jq 'map(.seconds) | add'"},
                    {"A file whose name begins with a minus", "vlwav info -- -song.wav"}}}) {
        Take(Option{"FILE", "", "Audio files; - is standard input", &m_files, Words::Files}.Required());
        Take({"--short", "", "One line of at most 80 columns for each file", &m_short});
        Take({"--chunks", "", "List the chunks of the file with their places and sizes", &m_chunks});
        Take({"--peak", "", "Read all of the audio, and tell its peak for each channel", &m_peak});
        Take({"--json", "", "One JSON array with all of it instead of lines", &m_json});
    }
    bool TakesEncoding() const override { return true; }

    ExitCode Run(Context& context) override;

private:
    std::vector<std::string> m_files;
    bool m_short = false;
    bool m_chunks = false;
    bool m_peak = false;
    bool m_json = false;
};

ExitCode InfoCommand::Run(Context& context) {
    vlw::Reader reader(context.Module());
    reader.text(context.Text());
    static_cast<void>(vlw_reader_decode_late(reader.get(), 1));  // a reader is there, so it can't fail
    Output output = Output::Standard();
    HeldLines lines(output);
    auto array = nlohmann::ordered_json::array();  // for JSON alone: lines for people come file by file
    ExitCode exitCode = EXIT_DONE;
    for (const std::string& file : m_files) {
        try {
            Source::OpenWhole(reader, file);
            const FileFacts found = FileFacts::Of(reader, m_chunks || m_json, m_peak);
            if (found.cut) {
                lines.Flush();  // what was found before stands before it, where both go to one place
                Report::Note(file, "Warning: the file ends before the audio that its head promises.");
            }
            if (m_json)
                array.push_back(InfoText::Json(file, found));
            else
                lines.Write(m_short ? InfoText::Short(file, found) : InfoText::Lines(file, found, m_chunks));
        } catch (const OutputFailure&) {
            throw;
        } catch (const std::exception& failure) {
            exitCode = EXIT_FAILED;
            lines.Flush();
            Report::Complain(file, failure);
            if (m_json) array.push_back(Report::JsonFailure(file, failure));
        }
    }
    if (m_json) output.Write(Report::Json(array));
    lines.Flush();
    output.Commit();
    return exitCode;
}

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }
