#include <fmt/format.h>

#include <optional>

#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/files/FileText.h"
#include "host/files/Output.h"
#include "host/files/Source.h"
#include "host/tags/TagChanges.h"
#include "host/tags/TagSheet.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"

namespace {

struct TagOptions {
    std::vector<std::string> files;
    std::vector<std::string> sets;    // "NAME=VALUE"
    std::vector<std::string> clears;  // names
    std::string from;                 // a file whose tags are copied
    std::string exported;             // where to, "-" is standard output
    std::string imported;             // where from, "-" is standard input
    bool overwrite = false;
    bool cover = false;  // show pictures too
    bool lossy = false;  // tags that the file can't keep may change
    bool json = false;
};

struct PictureKind {
    std::string_view mark;  // that its bytes begin with
    const char* name;
};
constexpr PictureKind kPictureKinds[] = {
    {"\xFF\xD8", "JPEG"}, {"\x89PNG", "PNG"}, {"GIF8", "GIF"}, {"BM", "BMP"}};

// By their numbers in ID3 (ID3v2.4, 4.14).
constexpr const char* kPictureRoles[] = {"other",
                                         "file icon",
                                         "other file icon",
                                         "front cover",
                                         "back cover",
                                         "leaflet",
                                         "medium",
                                         "lead artist",
                                         "artist",
                                         "conductor",
                                         "band",
                                         "composer",
                                         "lyricist",
                                         "recording location",
                                         "during recording",
                                         "during performance",
                                         "screen capture",
                                         "a bright coloured fish",
                                         "illustration",
                                         "band logotype",
                                         "publisher logotype"};

std::string Describe(const vlw::Picture& picture) {
    const std::string_view bytes(static_cast<const char*>(picture.data), picture.size);
    const char* kind = "picture";
    for (const PictureKind& row : kPictureKinds)
        if (bytes.starts_with(row.mark)) kind = row.name;
    const auto number = static_cast<size_t>(picture.number);
    return fmt::format("{}, {}, {} bytes",
                       number < std::size(kPictureRoles) ? kPictureRoles[number] : "other", kind,
                       picture.size);
}

std::string Text(const std::string& file, const vlw::Tags& tags, bool pictures) {
    std::string text = TerminalText::Printable(file) + "\n";
    if (tags.empty()) text += "  no tags\n";
    for (const auto& [name, value] : tags)
        text += fmt::format("  {:<9}  {}\n", name, TerminalText::Printable(value));
    if (pictures)
        for (const vlw::Picture& picture : tags.pictures())
            text += fmt::format("  picture    {}\n", Describe(picture));
    return text;
}

class TagCommand final : public Command {
public:
    TagCommand()
        : Command(
              {"tag",
               "Show or change the tags of WAV files",
               {"Shows them; with --set, --clear, --from and --import they are changed before, in place, and "
                "no byte of the "
                "audio is. An interrupted change leaves the old tags or the new ones. A tag that the file "
                "can't keep as it is "
                "given is refused, unless --lossy is given. A file keeps the encoding of its texts, unless "
                "--encoding asks for another.",
                "--export writes the tags of all files as a JSON array with an entry for each; --import "
                "takes such an array and changes "
                "the files that it names, or those of them that the command line names. A tag that is null "
                "there is taken away, one "
                "that isn't there stays."},
               {{"Set two tags and take one away",
                 "vlwav tag song.wav --set artist=\"Zoe\" --set year=2007 --clear comment"},
                {"The tags of a folder into a file, and back after they were edited there",
                 "vlwav tag *.wav --export tags.json && editor tags.json && vlwav tag --import tags.json"},
                {"Those of another file", "vlwav tag new.wav --from old.wav"}}}) {
        Take({"FILE", "", "WAV files; - is standard input", &m_options.files, Words::Files});
        Take({"--set", "NAME=VALUE", "A tag to set; the others stay", &m_options.sets, Words::TagValues});
        Take({"--clear", "NAME", "A tag to take away", &m_options.clears, Words::TagNames});
        Take({"--from", "OTHER", "Set the tags that another audio file has", &m_options.from, Words::Files});
        Take({"--import", "IN", "Set the tags that a JSON array of --export has; - is standard input",
              &m_options.imported, Words::Files});
        Take({"--export", "OUT", "Write the tags as JSON instead of showing them; - is standard output",
              &m_options.exported, Words::Files});
        Take({"--overwrite", "", "Replace an OUT that is there already", &m_options.overwrite});
        Take({"--cover", "", "Show what pictures there are too", &m_options.cover});
        Take({"--lossy", "", "Let tags change or go that can't be kept as they are", &m_options.lossy});
        Take({"--json", "", "One JSON array instead of lines", &m_options.json});
    }
    bool TakesEncoding() const override { return true; }

    ExitCode Run(Context& context) override;

private:
    TagOptions m_options;
};

// The files of one command, one after the other.
class TagRun {
public:
    TagRun(const vlw::Module& module, vlw::Text text, const TagOptions& options)
        : m_options(options),
          m_text(text),
          m_changes(options.sets, options.clears),
          m_reader(module),
          m_editor(module) {
        m_editor.text(text);
        if (!options.imported.empty()) m_sheet.emplace(FileText::ReadList(options.imported));
        if (!options.from.empty()) ReadOther();
        if (m_options.files.empty() && !m_sheet) throw UsageFailure("No file is given.");
    }

    std::vector<std::string> Files() const {
        return m_options.files.empty() ? m_sheet->Files() : m_options.files;
    }

    // Changes what is to be changed. What comes of it.
    vlw::Tags Do(const std::string& file) {
        const TagChanges* const listed = m_sheet ? m_sheet->Find(file) : nullptr;
        if (m_sheet && !listed) throw Failure("The list has no entry for it.", "not-listed");
        if (listed || m_other || !m_changes.IsEmpty()) Change(file, listed);
        vlw::Tags tags = ReadTags(file);
        // Who asks for a tag to go mustn't believe that it went.
        for (const TagChanges* const changes : {listed, &m_changes})
            if (const std::string left = changes ? changes->LeftIn(tags, m_changes) : ""; !left.empty())
                throw Failure(
                    fmt::format("{} is still told by its chunk \"id3 \", which isn't changed.", left),
                    "unsupported");
        return tags;
    }

private:
    // The file isn't kept open, so that it can be changed.
    vlw::Tags ReadTags(const std::string& file, bool ofWav = true) {
        m_reader.text(m_text);
        Source::OpenWhole(m_reader, file);
        if (ofWav && m_reader.format().container != "WAV")
            throw Failure("Tags are shown and changed in WAV files alone.", "unsupported");
        vlw::Tags tags = m_reader.tags();
        m_reader.close();
        return tags;
    }

    void ReadOther() {
        const vlw::Tags tags = ReadTags(m_options.from, false);
        m_other.emplace();
        for (const vlw::Keyword& keyword : vlw::keywords()) {
            const auto value = tags.get(keyword.name);
            if (!value) continue;
            if (keyword.is_kept)
                m_other->set(keyword.name, *value);
            else
                Report::Note(m_options.from,
                             fmt::format("Note: a WAV file can't keep the tag {}.", keyword.name));
        }
    }

    void Change(const std::string& file, const TagChanges* listed) {
        if (file == "-") throw Failure("It can't be changed; name a file.", "unsupported");
        m_editor.open(file);
        const vlw::Format format = m_editor.format();
        vlw::TagsRef tags = m_editor.tags();
        if (m_text == vlw::Text::utf8) TakeOldTexts(file, tags);
        if (m_other)
            for (const auto& [name, value] : *m_other) tags.set(name, value);
        if (listed) listed->ApplyTo(tags);
        m_changes.ApplyTo(tags);
        Save(file);
        // A list that follows ends the audio, so from now on the head tells what is there.
        if (format.frames && format.frames_promised && *format.frames < *format.frames_promised)
            Report::Note(file, fmt::format("Note: {} of {} promised frames are there; the head may tell only "
                                           "these from now on.",
                                           *format.frames, *format.frames_promised));
    }

    // Texts in Windows-1252 are no UTF-8: read as what they are, all of them are written anew.
    void TakeOldTexts(const std::string& file, vlw::TagsRef& tags) {
        m_reader.text(vlw::Text::automatic);
        m_reader.open(file);
        const vlw::Tags old = m_reader.tags();
        std::vector<std::string> names;
        for (const auto& [name, value] : tags) names.emplace_back(name);
        for (const std::string& name : names)
            if (const auto value = old.get(name)) tags.set(name, *value);
    }

    // What the file can't keep is refused, or told and saved as far as it goes.
    void Save(const std::string& file) {
        const vlw::Result<> saved = m_editor.try_save();
        if (saved) return;
        if (saved.error().code != vlw::Code::would_lose) throw vlw::Error(saved.error());
        if (!m_options.lossy)
            throw Failure(saved.error().text + " With --lossy it is saved as far as it goes.", "would-lose");
        m_editor.save(vlw::Flags::lossy);
        Report::Note(file, Report::NoteOf(file, saved.error().text));
    }

    const TagOptions& m_options;
    const vlw::Text m_text;
    const TagChanges m_changes;
    vlw::Reader m_reader;
    vlw::Editor m_editor;
    std::optional<vlw::Tags> m_other;
    std::optional<TagSheet> m_sheet;
};

ExitCode TagCommand::Run(Context& context) {
    TagRun run(context.Module(), context.Text(), m_options);
    const bool exports = !m_options.exported.empty();
    Output output = exports ? Output::Named(m_options.exported, "", m_options.overwrite) : Output::Standard();
    auto array = nlohmann::ordered_json::array();  // lines for people come file by file
    ExitCode exitCode = EXIT_DONE;
    for (const std::string& file : run.Files()) {
        try {
            const vlw::Tags tags = run.Do(file);
            if (exports || m_options.json)
                array.push_back(TagSheet::EntryOf(file, tags));
            else
                output.Write(Text(file, tags, m_options.cover));
            if (m_options.json && m_options.cover)
                for (const vlw::Picture& picture : tags.pictures())
                    array.back()["pictures"].push_back(Describe(picture));
        } catch (const OutputFailure&) {
            throw;
        } catch (const std::exception& failure) {
            exitCode = EXIT_FAILED;
            Report::Complain(file, failure);
            array.push_back(Report::JsonFailure(file, failure));
        }
    }
    if (exports || m_options.json) output.Write(Report::Json(array));
    output.Commit();
    return exitCode;
}

}  // namespace

std::unique_ptr<Command> MakeTagCommand() { return std::make_unique<TagCommand>(); }
