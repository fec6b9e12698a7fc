#include <fmt/format.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "AudioCodec/metadata/IAC3MetadataEditor.h"
#include "host/Commands.h"
#include "host/Output.h"
#include "host/Report.h"
#include "host/Require.h"
#include "host/SourceTags.h"
#include "host/TagLimits.h"
#include "host/Tags.h"
#include "platform/base/Utf.h"

namespace {

// An editor with the file open, and an empty object for the tags to store; throws Failure.
RefPtr<IAC3MetadataEditor> OpenEditor(const Module& module, const std::string& file,
                                      RefPtr<IAC3Metadata>& empty) {
    RefPtr<IAC3MetadataEditor> editor;
    Require(module.CreateCodec()->CreateMetadataEditor(Utf::FromUtf8(file).c_str(), editor.Put()));
    Require(editor->GetMetadata(empty.Put()));  // in front of Open there is nothing to find
    const Result result = editor->Open();
    if (result == RESULT_CANNOT_OPEN && access(file.c_str(), R_OK) == 0)
        throw Failure("The file can't be opened for writing; check the rights on it.", result);
    Require(result);
    return editor;
}

// Stores the file's own tags with the changes; says before what gets lost. Returns what the file holds then.
// Throws Failure.
TagSet Change(const Module& module, const std::string& file, const std::vector<TagChange>& changes) {
    const RiffScan before = ScanRiff(file, ForeignTexts::PassOver);
    RefPtr<IAC3Metadata> metadata;
    RefPtr<IAC3MetadataEditor> editor = OpenEditor(module, file, metadata);
    RefPtr<IAC3Metadata> present;
    Require(editor->GetMetadata(present.Put()));
    TagSet tags = Tags::Read(*present);
    Tags::Apply(changes, tags);
    const TagSet foreseen = TagLimits::Foresee(file, tags, before);
    const std::string dropped = TagLimits::Dropped(before, true);
    if (!dropped.empty()) Report::Complain(file, fmt::format("Warning: the file loses {}.", dropped));

    Tags::Store(tags, *metadata);
    Require(editor->SetMetadata(metadata.Get()));
    Require(editor->Save());
    editor.Reset();
    // Save reports no failed write, so the file has to show what it holds now.
    TagSet held = Tags::Read(*Source(module, file).Metadata());
    if (held != foreseen)
        throw Failure("The file doesn't give back the tags that were saved; check the room on the disk.");
    return held;
}

TagSet Shown(const Module& module, const std::string& file) {
    RefuseHugeTags(file);
    const std::optional<TagSet> tags = ReadTags(module, Source(module, file), file);
    Require(tags ? RESULT_OK : RESULT_NOT_SUPPORTED);
    return *tags;
}

std::string Text(const std::string& file, const TagSet& tags) {
    std::string text = Report::Printable(file) + "\n";
    if (tags.empty()) text += "  no tags\n";
    for (const uint32_t id : Tags::ShownIds())
        if (const auto tag = tags.find(id); tag != tags.end())
            text += fmt::format("  {:<9}  {}\n", Tags::Name(id), Report::Printable(Utf::ToUtf8(tag->second)));
    return text;
}

nlohmann::ordered_json Json(const std::string& file, const TagSet& tags) {
    auto values = nlohmann::ordered_json::object();
    for (const uint32_t id : Tags::ShownIds()) {
        const auto tag = tags.find(id);
        if (tag == tags.end()) continue;
        const std::string value = Utf::ToUtf8(tag->second);
        values[Tags::Name(id)] =
            Tags::IsNumber(id) ? nlohmann::ordered_json(std::stol(value)) : nlohmann::ordered_json(value);
    }
    return {{"file", file}, {"tags", values}};
}

}  // namespace

ExitCode RunTag(const Module& module, const TagOptions& options) {
    const std::vector<TagChange> changes = Tags::ParseChanges(options.sets, options.clears);
    Output output = Output::Standard();
    auto array = nlohmann::ordered_json::array();  // lines for people come file by file
    ExitCode exitCode = EXIT_DONE;
    for (const std::string& file : options.files) {
        try {
            const TagSet tags = changes.empty() ? Shown(module, file) : Change(module, file, changes);
            if (options.json)
                array.push_back(Json(file, tags));
            else
                output.Write(Text(file, tags));
        } catch (const OutputFailure&) {
            throw;
        } catch (const Failure& failure) {
            exitCode = EXIT_FAILED;
            Report::Complain(file, failure.what());
            array.push_back(Report::JsonFailure(file, failure));
        }
    }
    if (options.json) output.Write(Report::Json(array));
    output.Commit();
    return exitCode;
}
