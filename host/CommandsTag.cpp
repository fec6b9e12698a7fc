#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/Report.h"
#include "host/TagChanges.h"
#include "host/TerminalText.h"

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
        Report::Complain(file, "Note: " + saved.error().text);
    }
    // A list that follows ends the audio, so from now on the head tells what is there.
    if (format.frames && format.frames_promised && *format.frames < *format.frames_promised)
        Report::Complain(file, fmt::format("Note: {} of {} promised frames are there; the head may tell only "
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

}  // namespace

ExitCode RunTag(const vlw::Module& module, const TagOptions& options) {
    const TagChanges changes(options.sets, options.clears);
    vlw::Reader reader(module);
    vlw::Editor editor(module);
    Output output = Output::Standard();
    auto array = nlohmann::ordered_json::array();  // lines for people come file by file
    ExitCode exitCode = EXIT_DONE;
    for (const std::string& file : options.files) {
        try {
            if (!changes.IsEmpty()) Change(editor, file, changes, options.lossy);
            const vlw::Tags tags = Held(reader, file);
            if (options.json)
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
    if (options.json) output.Write(Report::Json(array));
    output.Commit();
    return exitCode;
}
