#include "host/convert/FileConversion.h"

#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/files/Output.h"
#include "host/files/Source.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"

namespace {

namespace fs = std::filesystem;

// The text of a format that was made.
std::string TextOf(const vlw::Format& made, const std::vector<vlw::StockFormat>& formats) {
    for (const vlw::StockFormat& stock : formats)
        if (stock.format.rate == made.rate && stock.format.channels == made.channels &&
            stock.format.bits == made.bits)
            return stock.text;
    return {};
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream rest(text);
    rest.exceptions(std::ios::badbit);  // a lack of memory is no end
    for (std::string line; std::getline(rest, line);) lines.push_back(line);
    return lines;
}

// Of what a conversion gave up, whether it is channels, rate or bits: those stand in the file's line. Tags
// and chunks are named in quotes.
bool IsOfFormat(const std::string& note) {
    return note.find(" → ") != note.npos && note.find('"') == note.npos;
}

// Room, and numbers that tell of the old samples: nobody misses them.
bool IsOfNoUse(const std::string& note) { return note.starts_with("the output has no use for "); }

// " (6 channels → mono, 24 → 16 bits)", or nothing.
std::string FormatLosses(const std::string& notes) {
    std::string text;
    for (const std::string& line : Lines(notes))
        if (IsOfFormat(line)) text += (text.empty() ? " (" : ", ") + line;
    return text.empty() ? text : text + ')';
}

vlw_place PlaceOf(const std::string& name, int standard) {
    return {sizeof(vlw_place), name == "-" ? nullptr : name.c_str(), standard};
}

bool IsUpToDate(const ConvertJob& job) {
    std::error_code error;
    const auto made = fs::last_write_time(job.output, error);
    if (error) return false;
    const auto given = fs::last_write_time(job.input, error);
    return !error && made >= given;
}

}  // namespace

FileConversion::FileConversion(const ConversionRules& rules)
    : m_rules(rules), m_converter(rules.module), m_reader(rules.module) {
    // The converter is there, so it can't fail.
    if (rules.seed) static_cast<void>(vlw_converter_seed(m_converter.get(), *rules.seed));
}

ConversionResult FileConversion::Run(const ConvertJob& job, uint32_t threads,
                                     const std::function<void(const vlw::Progress&)>& progress) {
    if (IsSameFile(job.output, job.input))
        throw Failure("The output is the input itself; choose another name for -o.", "same-file");
    if (m_rules.newer && IsUpToDate(job)) return {true, 0, {}, {}};
    if (m_rules.dryRun) return Try(job);
    vlw::Conversion conversion = m_rules.conversion;
    conversion.threads = threads;
    if (m_rules.newer) conversion.flags = conversion.flags | vlw::Flags::overwrite;
    if (progress)
        conversion.progress = [&](const vlw::Progress& now) {
            progress(now);
            return true;
        };
    vlw::Tags tags;
    if (m_rules.changes.TakesAway()) {
        Source::Open(m_reader, job.input);
        if (!m_reader.seekable())
            throw Failure("It can be read but once, so no tag can be taken away from it.", "not-seekable");
        tags = m_reader.tags();
        conversion.flags = conversion.flags | vlw::Flags::no_tags;
    }
    m_rules.changes.ApplyTo(tags);
    conversion.tags = &tags;
    // What can't be made is told by the conversion itself.
    std::error_code ignored;
    if (const fs::path folder = fs::path(job.output).parent_path(); !folder.empty())
        fs::create_directories(folder, ignored);
    const vlw_place source = PlaceOf(job.input, STDIN_FILENO);
    const vlw_place target = PlaceOf(job.output, STDOUT_FILENO);
    const vlw::Result<vlw::Converted> made = m_converter.try_run_by(
        [&](vlw_converter* converter, const vlw_conversion* record) {
            return vlw_converter_run_places(converter, &source, &target, record);
        },
        conversion);
    if (!made) Refuse(job, made.error());
    const vlw::Format& format = made->format;
    return {false, static_cast<double>(format.frames.value_or(0)) / format.rate, Notes(job.input, *made),
            LineOf(job, *made)};
}

uint32_t FileConversion::SourceRate() const {
    vlw_format source{};
    source.size = sizeof source;
    return vlw_converter_source(m_converter.get(), &source) == VLW_OK ? source.rate : 0;
}

bool FileConversion::Has(uint32_t flag) const {
    return (static_cast<uint32_t>(m_rules.conversion.flags) & flag) != 0;
}

// What would be done, as far as that can be told without doing it.
ConversionResult FileConversion::Try(const ConvertJob& job) {
    Source::Open(m_reader, job.input);
    const vlw::Format format = m_reader.format();
    std::error_code ignored;
    if (fs::is_regular_file(job.output, ignored) && !m_rules.newer && !Has(VLW_OVERWRITE))
        throw Failure(Report::Exists(job.output), "exists");
    if (format.frames && *format.frames < format.frames_promised.value_or(0) && !Has(VLW_PARTIAL))
        throw Failure(fmt::format("It ends early: {} of {} promised frames are there.", *format.frames,
                                  *format.frames_promised) +
                          Report::kPartialHint,
                      "cut");
    if (format.frames == 0) throw Failure("It has no audio.", "damaged");
    const double seconds = format.duration().value_or(std::chrono::duration<double>(0)).count();
    return {
        false,
        seconds,
        {},
        fmt::format("{} -> {}\n", TerminalText::Printable(job.input), TerminalText::Printable(job.output))};
}

// With what the user can do about it.
void FileConversion::Refuse(const ConvertJob& job, const vlw::Failure& failure) {
    if (failure.code == vlw::Code::exists) throw Failure(Report::Exists(job.output), "exists");
    if (failure.code == vlw::Code::would_lose)
        throw Failure(failure.text + " With --lossy it is made all the same.", "would-lose");
    if (vlw_converter_refused_cut(m_converter.get()) != 0)
        throw Failure(failure.text + Report::kPartialHint, "cut");
    throw vlw::Error(failure);
}

std::string FileConversion::Notes(const std::string& input, const vlw::Converted& made) const {
    std::string lines;
    if (made.ending == vlw::Ending::cut)
        lines +=
            Report::Complaint(input, Report::NoteOf(input, vlw_converter_error(m_converter.get())->text));
    for (const std::string& line : Lines(made.notes))
        if (!IsOfFormat(line) && (m_rules.verbose || !IsOfNoUse(line)))
            lines += Report::Complaint(input, "Note: " + line + '.');
    return lines;
}

std::string FileConversion::LineOf(const ConvertJob& job, const vlw::Converted& made) const {
    return fmt::format("{} -> {}: {}, {}{}\n", TerminalText::Printable(job.input),
                       TerminalText::Printable(job.output), TextOf(made.format, m_rules.formats),
                       Report::Duration(made.format.frames.value_or(0), made.format.rate),
                       FormatLosses(made.notes));
}
