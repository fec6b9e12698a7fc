#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/Commands.h"
#include "host/Failure.h"
#include "host/Output.h"
#include "host/Report.h"
#include "host/TagChanges.h"

namespace {

// What the file can't keep is told, and saved as far as it goes.
void Change(vlw::Editor& editor, const std::string& file, const TagChanges& changes) {
    editor.open(file);
    vlw::TagsRef tags = editor.tags();
    changes.ApplyTo(tags);
    const vlw::Result<> saved = editor.try_save();
    if (saved) return;
    if (saved.error().code != vlw::Code::would_lose) throw vlw::Error(saved.error());
    Report::Complain(file, "Warning: " + Report::Printable(saved.error().text));
    editor.save(vlw::Flags::lossy);
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
    std::string text = Report::Printable(file) + "\n";
    if (tags.empty()) text += "  no tags\n";
    for (const auto& [name, value] : tags)
        text += fmt::format("  {:<9}  {}\n", name, Report::Printable(std::string(value)));
    return text;
}

nlohmann::ordered_json Json(const std::string& file, const vlw::Tags& tags) {
    using Value = nlohmann::ordered_json;
    auto values = Value::object();
    for (const auto& [name, value] : tags) {
        const std::string text(value);
        values[std::string(name)] = IsNumber(name) ? Value(std::stol(text)) : Value(text);
    }
    return {{"file", file}, {"tags", values}};
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
            if (!changes.IsEmpty()) Change(editor, file, changes);
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
