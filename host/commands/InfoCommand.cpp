#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/files/Output.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"

namespace {

constexpr size_t kBlockFrames = 16384;

struct Found {
    vlw::Format format;
    int64_t frames = 0;   // that are there
    bool direct = false;  // the module reads it by itself; else it has to be decoded
    bool lengthTold = false;
    bool cut = false;  // there is less than the head promises
};

// Only reading tells the length of some codecs.
void CountFrames(vlw::Reader& reader, Found& found) {
    auto blocks = reader.blocks(kBlockFrames);
    for (auto block : blocks) static_cast<void>(block);
    found.frames = reader.tell();
    found.cut = blocks.ending() == vlw::Ending::cut;
}

Found Examine(vlw::Reader& reader, const std::string& file) {
    reader.open(file);
    Found found{reader.format(), 0, false, vlw_reader_length_told(reader.get()) != 0};
    found.frames = found.format.frames.value_or(0);
    found.cut = found.frames < found.format.frames_promised.value_or(0);
    if (!found.format.frames) CountFrames(reader, found);
    constexpr uint32_t kPcm = 1;
    found.direct = found.format.codec_tag == kPcm && (found.format.bits == 8 || found.format.bits == 16);
    return found;
}

std::string Text(const std::string& file, const Found& found) {
    const vlw::Format& format = found.format;
    std::string remark;
    if (found.cut) remark = "; cut off";
    if (found.cut && format.frames_promised)
        remark += fmt::format(", {} frames are promised", *format.frames_promised);
    if (!found.lengthTold) remark = "; the head doesn't tell it";
    return fmt::format("{}\n  format   {} Hz, {} channel{}{}\n  length   {} frames, {}{}\n  reading  {}\n",
                       TerminalText::Printable(file), format.rate, format.channels,
                       format.channels == 1 ? "" : "s",
                       found.direct ? fmt::format(", {} bits", format.bits) : " when decoded", found.frames,
                       Report::Duration(found.frames, format.rate), remark,
                       found.direct ? "directly" : "through a decoding graph");
}

nlohmann::ordered_json Json(const std::string& file, const Found& found) {
    using Value = nlohmann::ordered_json;
    const vlw::Format& format = found.format;
    Value entry = Report::JsonEntry(file);
    entry.update({{"direct", found.direct},
                  {"channels", format.channels},
                  {"rate", format.rate},
                  {"bits", found.direct ? Value(format.bits) : Value(nullptr)},
                  {"frames", found.frames},
                  {"promised", format.frames_promised ? Value(*format.frames_promised) : Value(nullptr)},
                  {"present", found.frames},
                  {"seconds", static_cast<double>(found.frames) / format.rate}});
    return entry;
}

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
                   "Tell format and length of audio files",
                   {"A file that can't be read is named on standard error, and the others are told all the "
                    "same."},
                   {{"One file", "vlwav info song.wav"},
                    {"The seconds of all files of a folder",
                     "vlwav info --json *.wav | jq 'map(.seconds) | add'"},
                    {"A file whose name begins with a minus", "vlwav info -- -song.wav"}}}) {
        Take(Option{"FILE", "", "Audio files", &m_files, Words::Files}.Required());
        Take({"--json", "", "One JSON array instead of lines", &m_json});
    }
    bool TakesEncoding() const override { return true; }

    ExitCode Run(Context& context) override;

private:
    std::vector<std::string> m_files;
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
            const Found found = Examine(reader, file);
            if (found.cut) {
                lines.Flush();  // what was found before stands before it, where both go to one place
                Report::Note(file, "Warning: the file ends before the audio that its head promises.");
            }
            if (m_json)
                array.push_back(Json(file, found));
            else
                lines.Write(Text(file, found));
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
