// A run, step by step: (1) open the source, or refuse it, (2) settle the format, (3) collect the tags, (4)
// write, (5) note what the target won't have of the source, (6) finish, or leave the target as it was.
#include "capi/handles/Converter.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "capi/FormatChoice.h"
#include "capi/FormatLimits.h"
#include "capi/FormatRecord.h"
#include "capi/audio/ChannelMix.h"
#include "capi/audio/ConvertedPieces.h"
#include "capi/handles/SourceRest.h"
#include "capi/input/OpenInput.h"
#include "capi/vlwav_more.h"

namespace {

constexpr size_t kBlockFrames = 16384;
constexpr auto kProgressInterval = std::chrono::milliseconds(100);

std::string ChannelName(uint32_t channels) {
    if (channels == 1) return "mono";
    if (channels == 2) return "stereo";
    return std::to_string(channels) + " channels";
}

// Tells how far a run is, ten times a second and at the end.
class Progress {
public:
    explicit Progress(const vlw_conversion& wish) : m_wish(wish), m_next(std::chrono::steady_clock::now()) {}

    // Throws Failure where the program wants no more.
    void Tell(int64_t done, int64_t total) {
        const auto now = std::chrono::steady_clock::now();
        if (!m_wish.progress || now < m_next) return;
        m_next = now + kProgressInterval;
        TellNow(done, total);
    }
    void TellNow(int64_t done, int64_t total) {
        if (m_wish.progress && m_wish.progress(m_wish.user, done, total) != 0)
            throw Failure(VLW_CANCELLED, "The program stopped the conversion.");
    }

private:
    const vlw_conversion& m_wish;
    std::chrono::steady_clock::time_point m_next;
};

}  // namespace

vlw_code Converter::Run(const char* source, const char* target, const vlw_conversion& wish) {
    Forget();
    std::error_code ignored;
    if (std::filesystem::equivalent(source, target, ignored))
        throw Failure(VLW_BAD_ARGUMENT, std::string(target) + " is the source itself.", target);
    m_reader.SetOutput(0, 0);
    m_reader.SetText(wish.text);
    m_reader.Open(OpenPath(source));  // (1)
    if (m_reader.Facts().IsCut() && !(wish.flags & VLW_PARTIAL)) RefuseCut();
    const AudioFormatInfo format = ChooseTarget(wish);  // (2)
    SetUp(format, wish);
    m_writer.CreateFile(target, wish.flags & (VLW_OVERWRITE | VLW_LOSSY));
    vlw_code end = VLW_OK;
    try {
        end = m_threads > 1 ? CopyInPieces(format, wish) : Copy(wish);  // (4)
        if ((wish.flags & VLW_NOT_EMPTY) && m_writer.Tell() == 0)
            throw Failure(VLW_DAMAGED, std::string(source) + " has no audio.", source);
        // Before the target is there: what fails must leave it as it was.
        NoteFormat(format);  // (5)
        if (!(wish.flags & VLW_NO_CHUNKS)) NoteRest();
        m_writer.Finish();  // (6)
    } catch (...) {
        m_writer.Drop();
        m_notes.clear();
        throw;
    }
    for (const std::string& clause : m_writer.Losses()) Note(clause);
    // Told, not looked at: a pipe or a device gives nothing back.
    m_made = RecordOf(format);
    m_made->frames = m_made->frames_promised = m_writer.Frames();
    return end;
}

void Converter::RefuseCut() {
    m_refusedCut = true;
    const Failure reason = m_reader.CutReason();
    throw Failure(VLW_DAMAGED, reason.what(), reason.Path());
}

void Converter::Forget() noexcept {
    m_notes.clear();
    m_made.reset();
    m_refusedCut = false;
}

void Converter::Release() noexcept { m_reader.Close(); }

AudioFormatInfo Converter::ChooseTarget(const vlw_conversion& wish) const {
    const SourceFacts& facts = m_reader.Facts();
    const FormatWish wanted = {wish.rate, wish.channels, wish.bits};
    const std::vector<AudioFormatInfo>& formats = m_module.Get().Formats();
    // Of what has to be decoded any width is as near as another.
    const AudioFormatInfo& format =
        formats[ChooseFormat(formats, wanted, {facts.rate, facts.channels, facts.directBits})];
    if (!Fulfils(format, wanted))
        throw Failure(VLW_UNSUPPORTED, DescribeFormat(wanted) + " can't be written; the nearest format is " +
                                           DescribeFormat(format) + '.');
    if (!CanMix(facts.channels, format.channels, facts.channelMask))
        throw Failure(VLW_UNSUPPORTED, std::to_string(format.channels) + " channels can't be made of " +
                                           std::to_string(facts.channels) + "; one can.");
    return format;
}

void Converter::SetUp(const AudioFormatInfo& format, const vlw_conversion& wish) {
    const SourceFacts& facts = m_reader.Facts();
    m_threads = ChooseThreads(format, wish);
    // The writer converts, as long as it can be told of the source's rate, and one thread does the work.
    if (!FormatLimits::IsRate(facts.rate)) m_reader.SetOutput(format.samplesPerSec, 0);
    if (m_threads > 1)
        m_writer.SetInput(format.samplesPerSec, format.channels);
    else
        m_writer.SetInput(m_reader.Rate(), m_reader.Channels());
    m_writer.SetOutput(format.samplesPerSec, format.channels, format.bitsPerSample);
    m_writer.SetText(wish.text);
    const Tags tags = CollectTags(wish);  // (3)
    m_writer.SetTags(&tags);
}

uint32_t Converter::ChooseThreads(const AudioFormatInfo& format, const vlw_conversion& wish) const {
    const SourceFacts& facts = m_reader.Facts();
    const bool isCopy = facts.rate == format.samplesPerSec && facts.channels == format.channels;
    if (isCopy || wish.threads == 1 || !FormatLimits::IsRate(facts.rate)) return 1;
    if (!m_reader.IsSeekable() || !ConvertedPieces::CanMake(facts)) return 1;
    const int64_t frames = ConvertedLength(*facts.frames, facts.rate, format.samplesPerSec);
    return WaveOutput::FitsEasily(frames, format) ? ConvertedPieces::UsefulThreads(wish.threads, frames) : 1;
}

Tags Converter::CollectTags(const vlw_conversion& wish) {
    Tags tags;
    if (!(wish.flags & VLW_NO_TAGS)) tags = m_reader.ReadTags();
    // Those that no WAV file keeps are named with what else the target doesn't have.
    if (wish.flags & VLW_LOSSY) tags.DropUnkept();
    if (wish.tags) tags.Add(wish.tags->content);
    return tags;
}

vlw_code Converter::Copy(const vlw_conversion& wish) {
    Progress progress(wish);
    std::vector<int16_t> block(kBlockFrames * m_reader.Channels());
    const int64_t total = m_reader.Facts().frames.value_or(VLW_UNKNOWN);
    for (vlw_code code = VLW_OK; code == VLW_OK;) {
        size_t got = 0;
        code = m_reader.Read(block.data(), kBlockFrames, got);
        m_writer.Write(block.data(), got);
        if (code == VLW_CUT && !(wish.flags & VLW_PARTIAL)) RefuseCut();
        const int64_t done = InSourceFrames(m_reader.Position(), m_reader.Rate());
        if (code != VLW_OK) {
            const int64_t all = total != VLW_UNKNOWN ? total : done;
            progress.TellNow(all, all);
            return code == VLW_CUT ? VLW_CUT : VLW_OK;
        }
        progress.Tell(done, total);
    }
    return VLW_OK;
}

vlw_code Converter::CopyInPieces(const AudioFormatInfo& format, const vlw_conversion& wish) {
    Progress progress(wish);
    const SourceFacts& facts = m_reader.Facts();
    const int64_t first = WaveOutput::FirstFrame(facts.rate, format.samplesPerSec);
    ConvertedPieces pieces(m_module.Get(), m_reader.Source(), facts, {format.samplesPerSec, format.channels},
                           first, m_threads);
    const int64_t total = *facts.frames;
    for (;;) {
        const ConvertedPieces::Frames made = pieces.Next();
        if (made.count == 0) break;
        m_writer.Write(made.samples, made.count);
        progress.Tell(std::min(InSourceFrames(first + m_writer.Tell(), format.samplesPerSec), total), total);
    }
    if (pieces.EndedEarly() && !(wish.flags & VLW_PARTIAL)) RefuseCut();
    progress.TellNow(total, total);
    return pieces.EndedEarly() ? VLW_CUT : VLW_OK;
}

// Of frames at `rate`.
int64_t Converter::InSourceFrames(int64_t frames, uint32_t rate) const {
    const uint32_t own = m_reader.Facts().rate;
    if (rate == own) return frames;
    return static_cast<int64_t>(static_cast<double>(frames) * own / rate);
}

void Converter::NoteFormat(const AudioFormatInfo& format) {
    const SourceFacts& facts = m_reader.Facts();
    if (format.channels < facts.channels)
        Note(ChannelName(facts.channels) + " → " + ChannelName(format.channels));
    if (format.samplesPerSec < facts.rate)
        Note(std::to_string(facts.rate) + " → " + std::to_string(format.samplesPerSec) + " Hz");
    // Of coded audio the width says nothing of what it is worth.
    if (facts.unit.frames == 1 && format.bitsPerSample < facts.bits)
        Note(std::to_string(facts.bits) + " → " + std::to_string(format.bitsPerSample) + " bits");
    if (!facts.declaredBytes) Note("its head tells no length; it was read to the end of the file");
}

void Converter::NoteRest() {
    const std::string rest = NameRest(m_reader.Source(), m_reader.Facts());
    if (!rest.empty()) Note("the output doesn't have " + rest);
}

void Converter::Note(const std::string& line) {
    if (!m_notes.empty()) m_notes += '\n';
    m_notes += line;
}
