// A run, step by step: (1) open the source, or refuse it, (2) settle the format, (3) collect the tags, (4)
// write, (5) note what the target won't have of the source, (6) finish, or leave the target as it was.
#include "capi/handles/Converter.h"

#include <algorithm>
#include <chrono>

#include "capi/FormatChoice.h"
#include "capi/FormatLimits.h"
#include "capi/FormatRecord.h"
#include "capi/Keywords.h"
#include "capi/audio/ChannelMix.h"
#include "capi/audio/ConvertedPieces.h"
#include "capi/handles/FactsRecord.h"
#include "capi/handles/Id3Tags.h"
#include "capi/handles/Places.h"
#include "capi/handles/SourceRest.h"
#include "capi/handles/TagTrial.h"
#include "capi/vlwav_more.h"
#include "platform/file/TempFolder.h"

using namespace std::string_literals;

namespace {

constexpr size_t kBlockFrames = 16384;
constexpr auto kProgressInterval = std::chrono::milliseconds(100);

std::string ChannelName(uint32_t channels) {
    if (channels == 1) return "mono";
    if (channels == 2) return "stereo";
    return std::to_string(channels) + " channels";
}

std::string Listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
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

vlw_code Converter::Run(const vlw_place& source, const vlw_place& target, const vlw_conversion& wish) {
    Forget();
    const FileLabel made = Places::LabelOf(target);
    if (Places::AreOneFile(source, target))
        throw Failure(VLW_BAD_ARGUMENT, made.First() + " is the source itself.", made.path);
    m_reader.SetOutput(0, 0);
    m_reader.SetText(wish.text);
    m_reader.Open(Places::OpenSource(source));  // (1)
    m_source = RecordOf(m_reader.Facts());
    if (m_reader.Facts().IsCut() && !(wish.flags & VLW_PARTIAL)) RefuseCut();
    const AudioFormatInfo format = ChooseTarget(wish);  // (2)
    if (std::optional<Descriptor> live = Places::OpenLive(target)) m_live.emplace(std::move(*live), made);
    SetUp(format, wish);
    vlw_code end = VLW_OK;
    try {
        Begin(target, format, wish);
        end = m_threads > 1 ? CopyInPieces(format, wish) : Copy(format, wish);  // (4)
        if ((wish.flags & VLW_NOT_EMPTY) && Given() == 0)
            throw Failure(VLW_DAMAGED, m_reader.Label().First() + " has no audio.", m_reader.Label().path);
        // Before the target is there: what fails must leave it as it was.
        NoteFormat(format);  // (5)
        if (!(wish.flags & VLW_NO_CHUNKS)) NoteRest();
        Finish();  // (6)
    } catch (...) {
        m_writer.Drop();
        m_notes.clear();
        throw;
    }
    for (const std::string& clause : m_tagLosses) Note(clause);
    // Told, not looked at: a pipe or a device gives nothing back.
    m_made = RecordOf(format);
    m_made->frames = m_made->frames_promised = m_live ? m_live->Frames() : m_writer.Frames();
    return end;
}

void Converter::Begin(const vlw_place& target, const AudioFormatInfo& format, const vlw_conversion& wish) {
    const uint32_t flags = wish.flags & (VLW_OVERWRITE | VLW_LOSSY);
    if (m_live) return BeginLive(format, wish);
    if (target.path)
        m_writer.CreateFile(target.path, flags);
    else
        m_writer.CreateAt(target.fd, flags);
}

// Nothing goes out before it is known that tags and chunks can follow.
void Converter::BeginLive(const AudioFormatInfo& format, const vlw_conversion& wish) {
    const TagTrial trial(m_module.Get(), m_tags, wish.text, TempFolderPath());
    trial.RequireKept(wish.flags, m_live->Label());
    m_tagLosses = trial.Losses();
    std::optional<int64_t> frames = SureFrames(wish);
    const bool isShort = frames && *frames < kLeastSourceFrames;
    if (frames) frames = TargetFrames(*frames, format);
    m_live->Begin({format, isShort, frames, trial.List(), m_chunks ? &*m_chunks : nullptr});
}

// Of the source, where its end can't be elsewhere but by a failure.
std::optional<int64_t> Converter::SureFrames(const vlw_conversion& wish) const {
    const SourceFacts& facts = m_reader.Facts();
    if (facts.IsSure()) return facts.frames;
    const bool isHeld = !m_reader.IsSeekable() && facts.unit.bytes != 0 && !(wish.flags & VLW_PARTIAL);
    return isHeld ? facts.promised : std::nullopt;
}

void Converter::Finish() {
    if (m_live) return m_live->Finish();
    m_writer.Finish();
    m_tagLosses = m_writer.Losses();
}

void Converter::RefuseCut() {
    m_refusedCut = true;
    const Failure reason = m_reader.CutReason();
    throw Failure(VLW_DAMAGED, reason.what(), reason.Path());
}

void Converter::Forget() noexcept {
    m_notes.clear();
    m_source.reset();
    m_made.reset();
    Release();
    m_tagLosses.clear();
    m_dither.reset();
    m_refusedCut = false;
}

void Converter::Release() noexcept {
    m_live.reset();
    m_writer.SetChunks(nullptr);
    m_chunks.reset();
    m_reader.Close();
}

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
    if (Dithers(format, wish)) m_dither.emplace(m_seed);
    m_channels = format.channels;
    // The writer converts, as long as it can be told of the source's rate, and one thread does the work.
    // Noise comes after the conversion, and what goes out as it is made passes the writer by.
    if (!FormatLimits::IsRate(facts.rate)) m_reader.SetOutput(format.samplesPerSec, 0);
    if (m_dither || m_live) m_reader.SetOutput(format.samplesPerSec, format.channels);
    if (m_threads > 1)
        m_writer.SetInput(format.samplesPerSec, format.channels);
    else
        m_writer.SetInput(m_reader.Rate(), m_reader.Channels());
    m_writer.SetOutput(format.samplesPerSec, format.channels, format.bitsPerSample);
    m_writer.SetText(wish.text);
    m_tags = CollectTags(wish);  // (3)
    m_writer.SetTags(&m_tags);
    if (!(wish.flags & VLW_NO_CHUNKS)) {
        m_chunks.emplace(m_reader.Source(), facts, CarryTo(format, wish));
        m_writer.SetChunks(&*m_chunks);
    }
}

bool Converter::Dithers(const AudioFormatInfo& format, const vlw_conversion& wish) const {
    const SourceFacts& facts = m_reader.Facts();
    const bool isCopy = facts.rate == format.samplesPerSec && facts.channels == format.channels &&
                        facts.directBits == format.bitsPerSample;
    return (wish.flags & VLW_DITHER) && format.bitsPerSample == 8 && !isCopy;
}

// Of those that a reader makes, the one that the target begins with.
int64_t Converter::FirstFrame(const AudioFormatInfo& format) const {
    const uint32_t rate = m_reader.Facts().rate;
    return FormatLimits::IsRate(rate) ? WaveOutput::FirstFrame(rate, format.samplesPerSec) : 0;
}

int64_t Converter::TargetFrames(int64_t sourceFrames, const AudioFormatInfo& format) const {
    const uint32_t rate = m_reader.Facts().rate;
    return FormatLimits::IsRate(rate) ? WaveOutput::FramesOf(sourceFrames, rate, format.samplesPerSec)
                                      : ConvertedLength(sourceFrames, rate, format.samplesPerSec);
}

CarryTarget Converter::CarryTo(const AudioFormatInfo& format, const vlw_conversion& wish) const {
    const SourceFacts& facts = m_reader.Facts();
    CarryTarget target{format.samplesPerSec, format.channels, format.bitsPerSample};
    target.firstFrame = static_cast<uint64_t>(FirstFrame(format));
    target.frames = static_cast<uint64_t>(TargetFrames(facts.frames.value_or(0), format));
    target.withTags = !(wish.flags & VLW_NO_TAGS);
    return target;
}

uint32_t Converter::ChooseThreads(const AudioFormatInfo& format, const vlw_conversion& wish) const {
    const SourceFacts& facts = m_reader.Facts();
    const bool isCopy = facts.rate == format.samplesPerSec && facts.channels == format.channels;
    if (isCopy || wish.threads == 1 || !FormatLimits::IsRate(facts.rate)) return 1;
    if (!m_reader.IsSeekable() || !ConvertedPieces::CanMake(facts)) return 1;
    const int64_t frames = ConvertedLength(*facts.frames, facts.rate, format.samplesPerSec);
    return WaveOutput::FitsEasily(frames, format) ? ConvertedPieces::UsefulThreads(wish.threads, frames) : 1;
}

Tags Converter::KeptAsTheyAre(const Tags& tags, vlw_text text) const {
    Tags same;
    if (tags.AllTexts().empty()) return same;
    const TagTrial trial(m_module.Get(), tags, text, TempFolderPath());
    for (size_t index = 0; const TagRow* const row = Keywords::At(index); ++index)
        if (trial.Kept().TextOf(*row) == tags.TextOf(*row)) same.Put(*row, tags.TextOf(*row));
    return same;
}

Tags Converter::CollectTags(const vlw_conversion& wish) {
    Tags tags;
    if (!(wish.flags & VLW_NO_TAGS)) {
        tags = m_reader.ReadListTags();
        Tags more = m_reader.ReadId3Tags();
        if (!(wish.flags & VLW_NO_CHUNKS)) more = KeptAsTheyAre(more, wish.text);
        FillTags(tags, more);
    }
    // Those that no WAV file keeps are named with what else the target doesn't have.
    if (wish.flags & VLW_LOSSY) tags.DropUnkept();
    if (wish.tags) tags.Add(wish.tags->content);
    return tags;
}

void Converter::Give(const int16_t* samples, size_t frames) {
    if (m_dither) {
        m_dithered.assign(samples, samples + frames * m_channels);
        m_dither->Apply(m_dithered.data(), m_dithered.size());
        samples = m_dithered.data();
    }
    if (m_live)
        m_live->Write(samples, frames);
    else
        m_writer.Write(samples, frames);
}

// Where frames come and go live, one waits for no more than 20 ms of others.
size_t Converter::BlockFrames() const {
    constexpr uint32_t kBlocksPerSecond = 50;
    return m_live && !m_reader.IsSeekable() ? m_reader.Rate() / kBlocksPerSecond : kBlockFrames;
}

// So that the target begins as what the writer converts, and with any number of threads.
void Converter::PassOver(int64_t frames) {
    std::vector<int16_t> block(static_cast<size_t>(frames) * m_reader.Channels());
    size_t got = 0;
    static_cast<void>(m_reader.Read(block.data(), static_cast<size_t>(frames), got));
}

vlw_code Converter::Copy(const AudioFormatInfo& format, const vlw_conversion& wish) {
    Progress progress(wish);
    const size_t blockFrames = BlockFrames();
    std::vector<int16_t> block(blockFrames * m_reader.Channels());
    if (m_dither || m_live) PassOver(FirstFrame(format));
    const int64_t total = m_reader.Facts().frames.value_or(VLW_UNKNOWN);
    for (vlw_code code = VLW_OK; code == VLW_OK;) {
        size_t got = 0;
        code = m_reader.Read(block.data(), blockFrames, got);
        Give(block.data(), got);
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
    const int64_t first = FirstFrame(format);
    ConvertedPieces pieces(m_module.Get(), m_reader.Source(), facts, {format.samplesPerSec, format.channels},
                           first, m_threads);
    const int64_t total = *facts.frames;
    for (;;) {
        const ConvertedPieces::Frames made = pieces.Next();
        if (made.count == 0) break;
        Give(made.samples, made.count);
        progress.Tell(std::min(InSourceFrames(first + Given(), format.samplesPerSec), total), total);
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
    const SourceRest rest = FindSourceRest(m_reader.Source(), m_reader.Facts());
    if (!rest.lost.empty()) Note("the output doesn't have " + Listed(rest.lost));
    if (!rest.old.empty()) Note("the output has no use for " + Listed(rest.old));
}

void Converter::Note(const std::string& line) {
    if (!m_notes.empty()) m_notes += '\n';
    m_notes += line;
}
