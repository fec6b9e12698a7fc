#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/commands/Commands.h"
#include "host/compare/Alignment.h"
#include "host/compare/Comparison.h"
#include "host/files/Output.h"
#include "host/files/Source.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"

namespace {

using Value = nlohmann::ordered_json;

// What there is to tell of two files.
struct Verdict {
    bool same = false;
    std::string why;       // they can't be compared; empty where they were
    int64_t offset = 0;    // frames by which b comes later
    int64_t firstOfA = 0;  // that was compared
    uint32_t rate = 0;
    std::optional<Comparison> comparison;
    std::optional<int64_t> first;  // frame of a that differs
};

std::string Shape(const vlw::Format& format) {
    return fmt::format("{} Hz, {} channel{}", format.rate, format.channels, format.channels == 1 ? "" : "s");
}

Value Json(const Verdict& verdict) {
    Value entry = {{"schema", Report::kSchema}, {"same", verdict.same}};
    for (const char* const name : {"firstDifference", "peak", "snr", "offset"}) entry[name] = nullptr;
    if (!verdict.comparison) return entry;
    if (verdict.first) entry["firstDifference"] = *verdict.first;
    entry["peak"] = Value::array();
    entry["snr"] = Value::array();
    for (const Comparison::Channel& channel : verdict.comparison->Channels()) {
        entry["peak"].push_back(channel.peak);
        entry["snr"].push_back(channel.snr ? Value(*channel.snr) : Value(nullptr));
    }
    entry["offset"] = verdict.offset;
    return entry;
}

class CompareCommand final : public Command {
public:
    CompareCommand()
        : Command(
              {"compare",
               "Tell whether two files hold the same audio",
               {"The exit status is 0 where they do and 1 where they don't, or one can't be read. Compared "
                "are "
                "samples of 16 bits, as every other command reads them; a note says so of files that are "
                "wider. "
                "Tags and the form of the files don't count.",
                "Where they differ, the first frame that does is told, and for each channel the greatest "
                "difference and the ratio of A to the difference over all frames that both have. A file that "
                "is "
                "longer than the other is another; one that ends before the audio that its head promises is "
                "compared as far as it is there, with a note.",
                "With --align audio that comes up to a second sooner or later in B is found first, by the "
                "three "
                "seconds from the first sound of A, and the files are the same if all is the same that both "
                "have then. An offset above 0 means that it comes later in B; frames are counted in A."},
               {{"Whether a conversion kept every sample", "vlwav compare song.aiff song.wav"},
                {"What a lossy codec cost", "vlwav compare song.wav decoded.wav --align"},
                {"In a script", "vlwav compare --json a.wav b.wav | jq .firstDifference"}}}) {
        Take(Option{"A", "", "Audio file; - is standard input", &m_a, Words::Files}.Required());
        Take(Option{"B", "", "Audio file to compare it with; - likewise", &m_b, Words::Files}.Required());
        Take({"--align", "", "Find an offset of up to a second first", &m_align});
        Take({"--json", "", "One JSON object instead of lines", &m_json});
    }

    ExitCode Run(Context& context) override;

private:
    Verdict Compare(vlw::Reader& a, vlw::Reader& b) const;
    void TellNotes(const vlw::Reader& reader, const std::string& file, vlw::Ending ending) const;
    std::string Text(const Verdict& verdict) const;

    std::string m_a, m_b;
    bool m_align = false;
    bool m_json = false;
};

Verdict CompareCommand::Compare(vlw::Reader& a, vlw::Reader& b) const {
    const vlw::Format formatA = a.format(), formatB = b.format();
    Verdict verdict;
    if (formatA.rate != formatB.rate || formatA.channels != formatB.channels) {
        verdict.why = fmt::format("{} against {}", Shape(formatA), Shape(formatB));
        return verdict;
    }
    verdict.rate = formatA.rate;
    if (m_align) {
        for (const auto& [reader, file] : {std::pair(&a, &m_a), std::pair(&b, &m_b)})
            if (!reader->seekable())
                throw Failure(fmt::format("{} is read in order only; --align takes files.", *file),
                              "not-seekable");
        verdict.offset = FindOffset(a, b);
        verdict.firstOfA = std::max<int64_t>(0, -verdict.offset);
        a.seek(verdict.firstOfA);
        b.seek(std::max<int64_t>(0, verdict.offset));
    }
    const Comparison& comparison = verdict.comparison.emplace(a, b);
    verdict.first = comparison.FirstDifference();
    // Of what has no frame in common nothing can be said, unless there is none in either.
    const bool differentEnds = !comparison.SameLength() && (!m_align || comparison.Frames() == 0);
    if (!verdict.first && differentEnds) verdict.first = comparison.Frames();
    if (verdict.first) *verdict.first += verdict.firstOfA;
    verdict.same = !verdict.first;
    return verdict;
}

void CompareCommand::TellNotes(const vlw::Reader& reader, const std::string& file, vlw::Ending ending) const {
    const uint32_t bits = reader.format().bits;
    if (bits > 16)
        Report::Note(file, fmt::format("Note: its samples of {} bits are compared as 16 bits.", bits));
    if (vlw_reader_length_told(reader.get()) == 0) Report::Note(file, Report::kNoLengthNote);
    if (ending == vlw::Ending::cut)
        Report::Note(file, Report::NoteOf(file, vlw_reader_error(reader.get())->text));
}

std::string CompareCommand::Text(const Verdict& verdict) const {
    std::string text =
        fmt::format("{} and {}: {}\n", TerminalText::Printable(m_a), TerminalText::Printable(m_b),
                    verdict.same ? "the same audio" : "not the same audio");
    const auto row = [&text](const std::string& name, const std::string& value) {
        text += fmt::format("  {:<16} {}\n", name, value);
    };
    if (!verdict.why.empty()) row("format", verdict.why);
    if (!verdict.comparison) return text;
    const Comparison& comparison = *verdict.comparison;
    if (m_align)
        row("offset", verdict.offset == 0
                          ? "none"
                          : fmt::format("{} frames, {}; {} in B", std::abs(verdict.offset),
                                        Report::Duration(std::abs(verdict.offset), verdict.rate),
                                        verdict.offset > 0 ? "later" : "sooner"));
    row("compared", fmt::format("{} frames, {}", comparison.Frames(),
                                Report::Duration(comparison.Frames(), verdict.rate)));
    if (!comparison.SameLength())
        row("length", comparison.EndOfA() == vlw::Ending::more ? "A goes on" : "B goes on");
    if (verdict.first)
        row("first difference",
            fmt::format("frame {}, {}", *verdict.first, Report::Duration(*verdict.first, verdict.rate)));
    if (verdict.same) return text;
    int number = 0;
    for (const Comparison::Channel& channel : comparison.Channels()) {
        const std::string ratio =
            channel.snr ? fmt::format("signal to noise {:.1f} dB", *channel.snr) : "A is silent";
        row(fmt::format("channel {}", ++number),
            channel.peak == 0 ? "equal" : fmt::format("differs by up to {} steps, {}", channel.peak, ratio));
    }
    return text;
}

ExitCode CompareCommand::Run(Context& context) {
    if (m_a == "-" && m_b == "-") throw UsageFailure("Standard input can be one of both files alone.");
    const vlw::Module& module = context.Module();
    Output output = Output::Standard();
    const std::string* file = &m_a;
    try {
        vlw::Reader a(module), b(module);
        const auto open = m_align ? Source::OpenWhole : Source::Open;
        open(a, m_a);
        file = &m_b;
        open(b, m_b);
        const Verdict verdict = Compare(a, b);
        TellNotes(a, m_a, verdict.comparison ? verdict.comparison->EndOfA() : vlw::Ending::more);
        TellNotes(b, m_b, verdict.comparison ? verdict.comparison->EndOfB() : vlw::Ending::more);
        output.Write(m_json ? Report::Json(Json(verdict)) : Text(verdict));
        output.Commit();
        return verdict.same ? EXIT_DONE : EXIT_FAILED;
    } catch (const OutputFailure&) {
        throw;
    } catch (const std::exception& failure) {
        const auto* const error = dynamic_cast<const vlw::Error*>(&failure);
        if (error && error->path() == m_a) file = &m_a;
        Report::Complain(*file, failure);
        if (m_json) output.Write(Report::Json(Report::JsonFailure(*file, failure)));
        output.Commit();
        return EXIT_FAILED;
    }
}

}  // namespace

std::unique_ptr<Command> MakeCompareCommand() { return std::make_unique<CompareCommand>(); }
