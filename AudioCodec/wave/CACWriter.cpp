// The way of the audio:
//
//   Write --(1)--> m_gathered --(2)--> m_converter --(3)--> 8 or 16 bits --> m_wave     else
//         '------------------------------------------(3)----------------^               nothing to convert
//
// (1) gather the first block after a reset, (2) convert, 2048 samples at a time, (3) narrow and write. Before
// the converter is left or reset: (4) what is still gathered goes in, and before the file is closed: (5) the
// filter's tail. Invariant between two calls that succeed: the converter has taken in all input up to
// m_position but what is gathered.
#include "AudioCodec/wave/CACWriter.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/MetadataHandOver.h"
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagChanges.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "AudioCodec/shell/object/Saturating.h"
#include "AudioCodec/wave/FormatText.h"
#include "AudioCodec/wave/SampleWidth.h"
#include "AudioCodec/wave/StockFormatTexts.h"
#include "AudioCodec/wave/StockFormats.h"
#include "AudioCodec/wave/riff/FormatInfo.h"

namespace {

constexpr uint32_t kBlockSamples = 2048;   // converted samples on their way into the file
constexpr uint32_t kWrittenBlock = 65536;  // 8-bit audio is written in blocks of this size at the most

// What the converter must get at once after a reset to fill its history: with less, other than 32, the audio
// comes out shifted, and with up to its reach it doesn't begin at all.
constexpr uint32_t kFirstBlockFrames = 48;
constexpr uint32_t kFilterReach = 16;  // frames that it holds back

constexpr uint64_t kNoLimit = std::numeric_limits<uint64_t>::max();

constexpr InterfaceTableEntry kWriterInterfaces[] = {
    {&IID_IAC3Writer, 0}, {&IID_IAttributeContainer64, 0}, {&IID_IBase, 0}, {nullptr, 0}};

struct WriterAttribute {
    uint32_t id;
    const char16_t* text;
};
constexpr WriterAttribute kWriterAttributes[] = {
    {ATTR_CODEC_FORMAT_NAME, u"PCM"},
    {ATTR_WRITE_EXTENSION, u".wav"},
    {ATTR_CODEC_SHORT_NAME, u"wav"},
};

}  // namespace

CACWriter::CACWriter() {
    for (const WriterAttribute& attribute : kWriterAttributes) PresetString(attribute.id, attribute.text);
}

CACWriter::~CACWriter() { CACWriter::Close(); }

Result CACWriter::InternalQueryInterface(const GUID* iid, void** object) {
    return FindInterfaceEntry(this, kWriterInterfaces, iid, object);
}

const char16_t* CACWriter::GetClassName() { return u"CACWriter"; }

Result CACWriter::SelectFormat(uint32_t index) {
    const auto alone = Alone();
    if (index >= std::size(kStockFormats)) return RESULT_BAD_ARGUMENT;
    m_formatSelected = true;
    m_formatIndex = index;
    const StockFormat& row = kStockFormats[index];
    m_fileFormat = WaveFormat::Pcm(row.channels, row.samplesPerSec, row.bitsPerSample);
    return RESULT_OK;
}

Result CACWriter::SetFormat(uint32_t channels, uint32_t rate, uint32_t bytesPerSample) {
    const auto alone = Alone();
    // Of the rate the low 16 bits are kept: above 65535 Hz a host has the reader convert, as vlwav does.
    m_inputFormat =
        WaveFormat::Pcm(static_cast<uint16_t>(channels), static_cast<uint16_t>(rate), bytesPerSample * 8);
    return RESULT_OK;
}

Result CACWriter::GetFormat(uint32_t* channels, uint32_t* rate, uint32_t* bytesPerSample) {
    const auto alone = Alone();
    if (!channels || !rate || !bytesPerSample) return RESULT_BAD_ARGUMENT;
    *channels = m_inputFormat.channels;
    *rate = m_inputFormat.samplesPerSec;
    *bytesPerSample = m_inputFormat.bitsPerSample / 8U;
    return RESULT_OK;
}

Result CACWriter::GetFormatCount(uint32_t* count) {
    if (count) *count = static_cast<uint32_t>(std::size(kStockFormats));
    return RESULT_OK;
}

Result CACWriter::GetFormatInfo(uint32_t index, AudioFormatInfo* format, char16_t** text) {
    if (!format || index >= std::size(kStockFormats)) return RESULT_BAD_ARGUMENT;
    const StockFormat& row = kStockFormats[index];
    FillFormatInfo(WaveFormat::Pcm(row.channels, row.samplesPerSec, row.bitsPerSample), format);
    if (text) LoadFormatText(*this, index + kFirstFormatTextId, GetLong(ATTR_TEXT_LANGUAGE), text);
    return RESULT_OK;
}

Result CACWriter::GetSelectedFormat(uint32_t* index, AudioFormatInfo* format, char16_t** text) {
    const auto alone = Alone();
    if (!index) return RESULT_BAD_ARGUMENT;
    *index = m_formatIndex;
    return GetFormatInfo(m_formatIndex, format, text);
}

Result CACWriter::SetMetadata(IAC3Metadata* metadata) {
    const auto alone = Alone();
    return KeepMetadata(metadata, m_metadata);
}

Result CACWriter::GetMetadata(IAC3Metadata** metadata) {
    const auto alone = Alone();
    return GiveMetadata(
        metadata, [&](CMetadata& object) { return m_metadata ? object.Merge(*m_metadata) : RESULT_OK; });
}

Result CACWriter::GetLength(uint64_t* frames) {
    const auto alone = Alone();
    if (!frames) return RESULT_BAD_ARGUMENT;
    *frames = m_framesWritten;
    return RESULT_OK;
}

Result CACWriter::Open(const char16_t* path, uint32_t flags) {
    const auto alone = Alone();
    if (m_wave.HasSource()) CompleteFile();
    return AtBorder(RESULT_FAILED, [&] { return OpenFile(path, flags); });
}

Result CACWriter::OpenFile(const char16_t* path, uint32_t flags) {
    // Refused before a file is touched: with OPEN_OVERWRITE the open below empties the one that is there.
    if (m_formatSelected) {
        if (!IsInputConvertible()) return RESULT_FAILED;
        m_converter.Configure(m_inputFormat.channels, static_cast<int32_t>(m_inputFormat.samplesPerSec),
                              m_fileFormat.channels, static_cast<int32_t>(m_fileFormat.samplesPerSec));
        if (!m_converter.IsConversionFree()) m_converter.Prepare();
    }
    // Without a format the Open fails in any case, which is no reason to empty a file.
    const bool overwrite = m_formatSelected && (flags & OPEN_OVERWRITE) != 0;
    const Result opened = m_wave.OpenForWriting(path, overwrite);
    // Also after a failed open: from here on Write reports RESULT_WRITE_FAILED instead of RESULT_FAILED.
    m_wave.BeginAudio(m_fileFormat);
    if (!m_formatSelected || opened != RESULT_OK) {
        m_wave.CloseFile();
        return RESULT_FAILED;
    }
    m_position = 0;
    m_converter.ResetToInputPosition(0);
    ExpectFirstBlock();
    return RESULT_OK;
}

bool CACWriter::IsInputConvertible() const {
    const uint32_t from = m_inputFormat.channels;
    const uint32_t to = m_fileFormat.channels;
    return from != 0 && m_inputFormat.samplesPerSec != 0 && (from == to || from == 1 || to == 1);
}

Result CACWriter::Close() {
    const auto alone = Alone();
    m_formatSelected = false;
    return CompleteFile();
}

Result CACWriter::CompleteFile() {
    const Result completed = AtBorder(RESULT_NO_MEMORY, [&] {
        // The audio has to be complete before the list is put after it.
        if (!m_converter.IsConversionFree()) DrainConverter();
        StoreTags();
        return RESULT_OK;
    });
    // Whatever failed above: the sizes in the header are true only after this.
    const Result written = m_wave.WriteChanges();
    m_wave.CloseFile();
    return completed == RESULT_OK ? written : completed;
}

void CACWriter::StoreTags() {
    const InfoEncoding encoding = InfoEncodingOf(GetLong(ATTR_INFO_ENCODING));
    if (m_metadata && GetBool(ATTR_EDIT_CHANGED_ONLY)) {
        // Against a file without tags all that is set differs.
        if (auto entries = ChangedInfoEntries({}, {}, *m_metadata, encoding)) {
            m_wave.SetEntries(std::move(*entries));
            m_wave.SetModified(true);
        }
        return;
    }
    if (m_metadata) MetadataToTags(m_tags, *m_metadata, ZeroNumbers::Drop);
    if (m_tags.empty()) return;
    TagsToChunks(m_tags, m_wave.Chunks(), encoding);
    m_wave.SetModified(true);
}

Result CACWriter::Write(const void* buffer, uint32_t frames, uint32_t* framesAccepted) {
    const auto alone = Alone();
    if (!buffer || !framesAccepted) return RESULT_BAD_ARGUMENT;
    if (!m_formatSelected) return RESULT_NOT_OPEN;
    if (!m_wave.HasSource()) {
        *framesAccepted = 0;
        // RESULT_FAILED before any Open, RESULT_WRITE_FAILED after one that failed.
        return m_wave.WriteData(buffer, 0);
    }
    const auto* const input = static_cast<const int16_t*>(buffer);
    return AtBorder(RESULT_NO_MEMORY, [&] {
        return m_converter.IsConversionFree() ? WriteDirect(input, frames, framesAccepted)
                                              : WriteConverted(input, frames, framesAccepted);
    });
}

Result CACWriter::WriteDirect(const int16_t* frames, uint32_t count, uint32_t* accepted) {
    const Result result = WriteFrames(frames, count);
    *accepted = result == RESULT_OK ? count : 0;
    m_framesWritten += *accepted;
    return result;
}

Result CACWriter::WriteConverted(const int16_t* frames, uint32_t count, uint32_t* accepted) {
    uint32_t remaining = count;
    Result result = RESULT_OK;
    if (m_gathering) result = Gather(frames, remaining);
    if (result == RESULT_OK) result = Convert(frames, remaining, kNoLimit);
    // Also after a failed write, for the input in front of it: the converter has taken that and can't
    // give it back.
    m_position = Saturating::Add(m_position, count - remaining);
    if (result != RESULT_OK) return result;
    *accepted = count - remaining;
    m_framesWritten += *accepted;
    return remaining == 0 ? RESULT_OK : RESULT_FAILED;
}

void CACWriter::ExpectFirstBlock() {
    m_gathered.clear();
    m_gathering = true;
}

// (1) Moves input to what was gathered before, and lets it go once the first block is complete. A first Write
// that brings it all goes straight through. So the file doesn't depend on the sizes of the Writes.
Result CACWriter::Gather(const int16_t*& input, uint32_t& remaining) {
    const uint32_t channels = m_converter.SourceChannels();
    const auto held = static_cast<uint32_t>(m_gathered.size() / channels);
    m_gathering = held + uint64_t{remaining} < kFirstBlockFrames;
    if (held == 0 && !m_gathering) return RESULT_OK;

    const uint32_t moved = std::min(remaining, kFirstBlockFrames - held);
    const int16_t* const end = input + size_t{moved} * channels;
    m_gathered.insert(m_gathered.end(), input, end);
    input = end;
    remaining -= moved;
    return m_gathering ? RESULT_OK : ConvertGathered(kNoLimit);
}

Result CACWriter::ConvertGathered(uint64_t mostOutput) {
    const int16_t* input = m_gathered.data();
    auto frames = static_cast<uint32_t>(m_gathered.size() / m_converter.SourceChannels());
    return Convert(input, frames, mostOutput);
}

// (2) Takes input as far as the file takes output, and leaves `input` and `remaining` at the rest.
Result CACWriter::Convert(const int16_t*& input, uint32_t& remaining, uint64_t mostOutput) {
    int16_t block[kBlockSamples];
    const uint32_t room = kBlockSamples / m_converter.OutputChannels();
    while (remaining != 0 && mostOutput != 0) {
        uint32_t taken = remaining;
        auto made = static_cast<uint32_t>(std::min<uint64_t>(room, mostOutput));
        m_converter.Process(input, &taken, block, &made);
        if (made != 0) {
            const Result written = WriteFrames(block, made);
            if (written != RESULT_OK) return written;
        }
        // Only now: what the file didn't take is not reported as accepted.
        input += size_t{taken} * m_converter.SourceChannels();
        remaining -= taken;
        mostOutput -= made;
    }
    return RESULT_OK;
}

// (4) The converter is about to be left or reset: what is still gathered goes in now, whatever there is of
// it. Otherwise a short input, or a Seek soon after the start, would lose it.
void CACWriter::FlushGathered() {
    const auto frames = static_cast<int64_t>(m_gathered.size() / m_converter.SourceChannels());
    if (!m_gathering || frames == 0) return;
    // Too few for the converter's history: silence fills it up, and only the frames' own share of the output
    // is kept. One frame at least, so that no input vanishes without a trace.
    m_gathered.resize(size_t{kFirstBlockFrames + kFilterReach} * m_converter.SourceChannels());
    const int64_t share = Saturating::MulDiv(frames, m_converter.PhaseCount(), m_converter.InputStep());
    ConvertGathered(static_cast<uint64_t>(std::max<int64_t>(share, 1)));
    m_converter.ResetToInputPosition(m_position);  // the silence after them has no tail
    ExpectFirstBlock();
}

// (5) No input on offer makes the converter feed zeros, until its tail brings no more frames.
void CACWriter::DrainConverter() {
    FlushGathered();
    int16_t block[kBlockSamples];
    uint32_t made = 0;
    do {
        uint32_t taken = 0;
        made = kBlockSamples / m_converter.OutputChannels();
        m_converter.Process(nullptr, &taken, block, &made);
    } while (made != 0 && WriteFrames(block, made) == RESULT_OK);
}

// (3) The size of a frame is the open file's own: a later selection doesn't reach it.
Result CACWriter::WriteFrames(const int16_t* frames, uint32_t count) {
    const WaveFormat& format = m_wave.Format();
    const uint64_t bytes = uint64_t{format.blockAlign} * count;
    if (bytes > std::numeric_limits<uint32_t>::max()) return RESULT_WRITE_FAILED;
    if (format.bitsPerSample == 8) return WriteNarrowed(frames, static_cast<uint32_t>(bytes));
    return m_wave.WriteData(frames, static_cast<uint32_t>(bytes));
}

Result CACWriter::WriteNarrowed(const int16_t* samples, uint32_t count) {
    Result result = RESULT_OK;
    uint32_t done = 0;
    do {
        const uint32_t block = std::min(count - done, kWrittenBlock);
        if (m_byteBuffer.size() < block) m_byteBuffer.resize(block);
        std::transform(samples + done, samples + done + block, m_byteBuffer.begin(), NarrowSample);
        result = m_wave.WriteData(m_byteBuffer.data(), block);
        done += block;
    } while (result == RESULT_OK && done < count);
    return result;
}

Result CACWriter::SeekFileFrames(uint32_t origin, int64_t offset, int64_t* frame) {
    const int64_t blockAlign = m_wave.Format().blockAlign;
    Result result = RESULT_OK;
    if (origin != ORIGIN_CURRENT || offset != 0)
        result = m_wave.SeekData(Saturating::Mul(blockAlign, offset), origin);
    *frame = m_wave.TellData() / blockAlign;
    return result;
}

Result CACWriter::Seek(uint32_t origin, int64_t offset, int64_t* position) {
    const auto alone = Alone();
    if (!position) return RESULT_BAD_ARGUMENT;
    if (!m_formatSelected) return RESULT_NOT_OPEN;
    if (origin > ORIGIN_END) return RESULT_BAD_ARGUMENT;
    Result result = RESULT_OK;
    if (m_converter.IsConversionFree())
        result = SeekFileFrames(origin, offset, &m_position);
    else if (origin != ORIGIN_CURRENT || offset != 0)
        result = AtBorder(RESULT_NO_MEMORY, [&] { return SeekConverted(origin, offset); });
    *position = m_position;
    return result;
}

Result CACWriter::SeekConverted(uint32_t origin, int64_t offset) {
    // Before anything moves: what is gathered belongs to the place that is left.
    FlushGathered();
    if (origin == ORIGIN_END) {
        // The end is the file's, so the offset goes there in its frames, and what comes back is
        // where it stands.
        int64_t frame = Saturating::MulDiv(offset, m_converter.PhaseCount(), m_converter.InputStep());
        SeekFileFrames(origin, frame, &frame);
        m_position = Saturating::MulDiv(frame, m_converter.InputStep(), m_converter.PhaseCount());
    } else {
        m_position = origin == ORIGIN_START ? offset : Saturating::Add(m_position, offset);
    }
    // The file goes to the frame whose phase the converter begins with, so both count on from one place.
    m_position = std::max<int64_t>(m_position, 0);
    const int64_t frame = m_converter.ResetToInputPosition(m_position);
    ExpectFirstBlock();
    return m_wave.SeekData(Saturating::Mul(m_wave.Format().blockAlign, frame), ORIGIN_START);
}
