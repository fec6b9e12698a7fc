#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/files/Output.h"
#include "host/tags/TagChanges.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"

namespace {

// What the file can't keep is refused, or told and saved as far as it goes.
void Change(vlw::Editor& editor, const std::string& file, const TagChanges& changes, bool lossy) {
    editor.open(file);
    const vlw::Format format = editor.format();
    vlw::TagsRef tags = editor.tags();
    changes.ApplyTo(tags);
    const vlw::Result<> saved = editor.try_save();
    if (!saved) {
        if (saved.error().code != vlw::Code::would_lose) throw vlw::Error(saved.error());
        if (!lossy) throw Failure(saved.error().text + " With --lossy it is saved as far as it goes.");
        editor.save(vlw::Flags::lossy);
        Report::Note(file, "Note: " + saved.error().text);
    }
    // A list that follows ends the audio, so from now on the head tells what is there.
    if (format.frames && format.frames_promised && *format.frames < *format.frames_promised)
        Report::Note(file, fmt::format("Note: {} of {} promised frames are there; the head may tell only "
                                       "these from now on.",
                                       *format.frames, *format.frames_promised));
}

vlw::Tags Held(vlw::Reader& reader, const std::string& file) {
    reader.open(file);
    if (reader.format().container != "WAV") throw Failure("Tags are shown and changed in WAV files alone.");
    return reader.tags();
}

bool IsNumber(std::string_view name) {
    for (const vlw::Keyword& keyword : vlw::keywords())
        if (keyword.name == name) return keyword.is_number;
    return false;
}

std::string Text(const std::string& file, const vlw::Tags& tags) {
    std::string text = TerminalText::Printable(file) + "\n";
    if (tags.empty()) text += "  no tags\n";
    for (const auto& [name, value] : tags)
        text += fmt::format("  {:<9}  {}\n", name, TerminalText::Printable(value));
    return text;
}

nlohmann::ordered_json Json(const std::string& file, const vlw::Tags& tags) {
    using Value = nlohmann::ordered_json;
    auto values = Value::object();
    for (const auto& [name, value] : tags) {
        const std::string text(value);
        values[std::string(name)] = IsNumber(name) ? Value(std::stol(text)) : Value(text);
    }
    Value entry = Report::JsonEntry(file);
    entry["tags"] = values;
    return entry;
}

class TagCommand final : public Command {
public:
    TagCommand()
        : Command({"tag",
                   "Show or change the tags of WAV files",
                   {"Shows them; with --set and --clear they are changed before, in place, and no byte of "
                    "the audio "
                    "is. An interrupted change leaves the old tags or the new ones. A tag that the file "
                    "can't keep as it "
                    "is given is refused, unless --lossy is given."},
                   {{"Show the tags", "vlwav tag song.wav"},
                    {"Set two and take one away",
                     "vlwav tag song.wav --set artist=\"Zoe\" --set year=2007 --clear comment"},
                    {"The same artist for a folder", "vlwav tag *.wav --set artist=\"North Wind\""}}}) {
        Take(Option{"FILE", "", "WAV files", &m_files, Words::Files}.Required());
        Take({"--set", "NAME=VALUE", "A tag to set; the others stay", &m_sets, Words::TagValues});
        Take({"--clear", "NAME", "A tag to take away", &m_clears, Words::TagNames});
        Take({"--lossy", "", "Let tags change or go that can't be kept as they are", &m_lossy});
        Take({"--json", "", "One JSON array instead of lines", &m_json});
    }
    bool TakesEncoding() const override { return true; }

    ExitCode Run(Context& context) override;

private:
    std::vector<std::string> m_files;
    std::vector<std::string> m_sets;    // "NAME=VALUE"
    std::vector<std::string> m_clears;  // names
    bool m_lossy = false;               // tags that the file can't keep may change
    bool m_json = false;
};

ExitCode TagCommand::Run(Context& context) {
    const TagChanges changes(m_sets, m_clears);
    const vlw::Module& module = context.Module();
    vlw::Reader reader(module);
    vlw::Editor editor(module);
    reader.text(context.Text());
    editor.text(context.Text());
    Output output = Output::Standard();
    auto array = nlohmann::ordered_json::array();  // lines for people come file by file
    ExitCode exitCode = EXIT_DONE;
    for (const std::string& file : m_files) {
        try {
            if (!changes.IsEmpty()) Change(editor, file, changes, m_lossy);
            const vlw::Tags tags = Held(reader, file);
            if (m_json)
                array.push_back(Json(file, tags));
            else
                output.Write(Text(file, tags));
        } catch (const OutputFailure&) {
            throw;
        } catch (const std::exception& failure) {
            exitCode = EXIT_FAILED;
            Report::Complain(file, failure);
            array.push_back(Report::JsonFailure(file, failure));
        }
    }
    if (m_json) output.Write(Report::Json(array));
    output.Commit();
    return exitCode;
}

}  // namespace

std::unique_ptr<Command> MakeTagCommand() { return std::make_unique<TagCommand>(); }
