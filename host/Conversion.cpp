// A conversion, step by step: (1) open the input and settle the output's format, or refuse, (2) foresee the
// tags, (3) write under a temporary name, (4) have the closed file prove itself, (5) give it its name, (6)
// tell what it doesn't have of the input. Until (5) the place of the output is as it was, whatever fails.
#include "host/Conversion.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "AudioCodec/wave/IAC3Writer.h"
#include "host/AudioCopy.h"
#include "host/Output.h"
#include "host/Report.h"
#include "host/Require.h"
#include "host/SourceTags.h"
#include "host/TagLimits.h"
#include "platform/base/Utf.h"

namespace {

constexpr uint32_t kBytesPerSample = 2;
constexpr uint32_t kMaxWriterRate = 65535;  // Hz, of what the writer takes in
// RIFF sizes have 32 bits; some room is left for header and tags.
constexpr uint64_t kMaxAudioBytes = std::numeric_limits<uint32_t>::max() - (uint64_t{1} << 20);

// What passes from the reader to the writer: the source's own format, so that the writer converts, except
// where the writer can't be told the rate.
struct Passage {
    uint32_t channels;
    uint32_t rate;
};

Passage ChoosePassage(const SourceFormat& source, const StockFormat& format) {
    if (!CanMix(source.channels, format.channels))
        throw Failure(fmt::format("{} channels can't be made of {}; choose a format of one channel.",
                                  format.channels, source.channels));
    // The writer would keep the low 16 bits of the rate and convert from a wrong one; so the reader converts.
    if (source.rate > kMaxWriterRate) return {format.channels, format.rate};
    return {source.channels, source.rate};
}

void RequireRoom(int64_t frames, uint32_t rate, const StockFormat& format) {
    // Before anything is written, since the writer would only refuse after 4 GiB. The margin is larger
    // than the rounding.
    const double bytes = static_cast<double>(frames) * format.rate / rate * format.bytesPerFrame;
    if (bytes > static_cast<double>(kMaxAudioBytes))
        throw Failure("The audio would not fit into a WAV file of 4 GiB; choose a smaller format.");
}

void StoreTags(IAC3Writer& writer, const TagSet& tags) {
    RefPtr<IAC3Metadata> metadata;
    Require(writer.GetMetadata(metadata.Put()));  // of a writer that was given none: a new, empty object
    Tags::Store(tags, *metadata);
    Require(writer.SetMetadata(metadata.Get()));
}

void RefuseOwnInput(const std::string& input, const std::string& output) {
    std::error_code ignored;
    // By what the names lead to: a link to the input would be overwritten just as well.
    if (std::filesystem::equivalent(input, output, ignored))
        throw Failure("The output is the input itself; choose another name for -o.");
}

Output OpenOutput(const std::string& path, bool overwrite) {
    Output output = Output::File(path, overwrite ? Output::Existing::Replaced : Output::Existing::Kept);
    // The writer needs a file that it can go back in, to put sizes into the header.
    if (output.Temporary().empty())
        throw OutputFailure(fmt::format("{} is no regular file; choose another name for -o.", path));
    return output;
}

class Conversion {
public:
    // (1) Opens the input and settles what is to be made of it.
    Conversion(const ConversionRules& rules, const std::string& input)
        : m_module(rules.module),
          m_input(input),
          m_source(rules.module, input),
          m_format(rules.formats.Choose(rules.wish, m_source.Format())),
          m_passage(ChoosePassage(m_source.Format(), m_format)),
          m_tags(ReadTags(rules.module, m_source, input).value_or(TagSet())) {
        // The length is asked for after this, since it counts frames at the rate that is set.
        m_source.SetOutput(m_passage.channels, m_passage.rate);
        m_promised = m_source.Length();
        RequireRoom(m_promised, m_passage.rate, m_format);
        Tags::Apply(rules.changes, m_tags);
    }
    Converted Run(Output output);

private:
    RefPtr<IAC3Writer> OpenWriter(const std::string& path) const;
    void Copy(IAC3Writer& writer, const std::string& outputName);
    int64_t RequireWhole(const std::string& path, const TagSet& expectedTags) const;

    const Module& m_module;
    const std::string& m_input;
    Source m_source;
    const StockFormat& m_format;
    Passage m_passage;
    TagSet m_tags;
    int64_t m_promised = 0;  // frames, like the next at the passage's rate
    int64_t m_taken = 0;
};

Converted Conversion::Run(Output output) {
    // (2) Before the file is written: what comes back in another form is warned of, and expected so in (4).
    const TagSet expectedTags = TagLimits::Foresee(m_input, m_tags, {});
    const RefPtr<IAC3Writer> writer = OpenWriter(output.Temporary());  // (3)
    StoreTags(*writer, m_tags);
    Copy(*writer, output.Name());
    // (3) ends here: header and tags are written by the Close.
    Require(writer->Close());
    const int64_t frames = RequireWhole(output.Temporary(), expectedTags);
    output.Commit();  // (5)

    // (6) Only now: what is told of an output that never came would mislead.
    WarnIfShort(m_input, m_source.Format(), m_passage.rate, m_promised, m_taken);
    const std::string dropped = TagLimits::Dropped(ScanRiff(m_input), false);
    if (!dropped.empty())
        Report::Complain(m_input, fmt::format("Note: the output doesn't have {}.", dropped));
    return {m_format, frames};
}

RefPtr<IAC3Writer> Conversion::OpenWriter(const std::string& path) const {
    RefPtr<IAC3Writer> writer;
    Require(m_module.CreateCodec()->CreateWriter(writer.Put()));
    Require(writer->SetFormat(m_passage.channels, m_passage.rate, kBytesPerSample));
    Require(writer->SelectFormat(m_format.index));
    Require(writer->Open(Utf::FromUtf8(path).c_str(), OPEN_OVERWRITE));
    return writer;
}

void Conversion::Copy(IAC3Writer& writer, const std::string& outputName) {
    m_taken = CopyAudio(m_source, m_passage.channels, [&](const int16_t* samples, uint32_t frames) {
        uint32_t accepted = 0;
        const Result result = writer.Write(samples, frames, &accepted);
        if (result == RESULT_WRITE_FAILED)
            throw Failure(fmt::format("Writing to {} failed; check the room on the disk.", outputName),
                          result);
        Require(result);
    });
}

// (4) The writer's Close reports no failed write, so the closed file has to prove itself: its sizes, its
// format, as many frames as were taken from the input, the tags. Returns its frames.
int64_t Conversion::RequireWhole(const std::string& path, const TagSet& expectedTags) const {
    const auto require = [](bool good) {
        if (!good) throw Failure("The written file was not whole; check the room on the disk and try again.");
    };
    require(ScanRiff(path).IsWhole());
    const Source written(m_module, path);
    const SourceFormat& found = written.Format();
    require(found.direct && found.channels == m_format.channels && found.rate == m_format.rate &&
            found.bits == m_format.bits);
    const int64_t frames = written.Length();
    const double ratio = static_cast<double>(m_format.rate) / m_passage.rate;
    const double missing = static_cast<double>(m_taken) * ratio - static_cast<double>(frames);
    // One frame of the output for the rounding, and one of the input for where its end lies between two.
    require(std::abs(missing) <= (m_passage.rate == m_format.rate ? 0 : 1 + ratio));  // rounded at the end
    require(Tags::Read(*written.Metadata()) == expectedTags);
    return frames;
}

}  // namespace

Converted Convert(const ConversionRules& rules, const std::string& input, const std::string& output) {
    RefuseOwnInput(input, output);
    RefuseHugeTags(input);
    Conversion conversion(rules, input);
    return conversion.Run(OpenOutput(output, rules.overwrite));
}
