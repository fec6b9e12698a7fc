// The way of the audio, where no inner reader does the work:
//
//   m_wave --(1)--> 16-bit frames --------------------------------------> host's buffer   nothing to convert
//                         '--(2)--> m_staged --(3)--> m_converter -----> host's buffer   else
//
// (1) read whole frames and widen 8 bits, (2) stage a block of them, (3) make output frames out of it. What
// is staged was read already, so whatever moves the source or changes the format drops it first.
#include "AudioCodec/wave/CACStreamReader.h"

#include <algorithm>
#include <cmath>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/MetadataHandOver.h"
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/shell/object/InterfaceTable.h"
#include "AudioCodec/shell/object/Saturating.h"
#include "AudioCodec/wave/ReadExtensions.h"
#include "AudioCodec/wave/SampleWidth.h"
#include "AudioCodec/wave/riff/FormatInfo.h"
#include "platform/file/Paths.h"
#include "riff/WaveTypes.h"

namespace {

constexpr uint32_t kOutputBytesPerSample = 2;
constexpr uint32_t kByteBlock = 65536;  // raw 8-bit audio is taken in blocks of this size at the most

constexpr InterfaceTableEntry kReaderInterfaces[] = {{&IID_IBase, 0},
                                                     {&IID_IAttributeContainer64, 0},
                                                     {&IID_IAC3Reader, 0},
                                                     {&IID_IAC3StreamReader, 0},
                                                     {nullptr, 0}};

struct TextAttribute {
    uint32_t id;
    const char16_t* text;
};
constexpr TextAttribute kAttributes[] = {
    {ATTR_CODEC_FORMAT_NAME, u"PCM"},
    {ATTR_READ_EXTENSION, u".wav"},
    {ATTR_STREAM_EXTENSION, u".wav"},
    {ATTR_CODEC_SHORT_NAME, u"wav"},
};

bool IsAiff(const char16_t* path) {
    const char16_t* extension = PathFindExtensionW(path);
    return extension && lstrcmpiW(extension, u".aif") == 0;
}

// position * rate / oldRate, in double precision and truncated; 0 where there was no rate.
int64_t RescalePosition(int64_t position, uint32_t rate, int32_t oldRate) {
    if (oldRate <= 0) return 0;
    const double scaled = std::trunc(static_cast<double>(rate) * static_cast<double>(position) / oldRate);
    return scaled < 9.2e18 ? static_cast<int64_t>(scaled) : Saturating::kMost;
}

}  // namespace

CACStreamReader::CACStreamReader() {
    for (const TextAttribute& attribute : kAttributes) PresetString(attribute.id, attribute.text);
    m_wave.KeepChunks(InfoWanted::Tags);
}

CACStreamReader::~CACStreamReader() { CACStreamReader::Close(); }

Result CACStreamReader::InternalQueryInterface(const GUID* iid, void** object) {
    return FindInterfaceEntry(this, kReaderInterfaces, iid, object);
}

const char16_t* CACStreamReader::GetClassName() { return u"CACStreamReader"; }

Result CACStreamReader::Open(const char16_t* path, uint32_t flags) {
    const auto alone = Alone();
    if (m_inner) m_inner->Close();
    m_inner.reset();
    // After an exception half way through, format and converter may not belong together.
    const auto onThrow = [this](bool) { return ForgetSource(), RESULT_CANNOT_OPEN; };
    return AtBorder(onThrow, [&] { return OpenFile(path, flags); });
}

Result CACStreamReader::OpenFile(const char16_t* path, uint32_t flags) {
    // By its name alone: the walk would refuse an AIFF head, and the inner reader looks at the bytes itself.
    const bool aiff = IsAiff(path);
    if (!aiff) {
        const Result opened = m_wave.OpenForReading(path, (flags & OPEN_READ_ONLY) != 0);
        if (opened != RESULT_OK) return opened;
    }
    // Without a format the source isn't direct PCM, and so goes to the inner reader below.
    m_sourceFormat = aiff ? WaveFormat{} : m_wave.Format();
    if (!m_sourceFormat.IsDirectPcm()) {
        const Result opened = OpenInner(path, flags);
        if (opened != RESULT_OK) return opened;
    }
    // Last, when nothing can refuse the file any more: the tags of one that didn't open are not kept.
    TakeTags();
    StartAtBeginning();
    return RESULT_OK;
}

Result CACStreamReader::OpenInner(const char16_t* path, uint32_t flags) {
    m_wave.AttachStream(nullptr);  // the inner reader opens the file itself
    m_inner = CreateInnerReader();
    if (!m_inner) return RESULT_CANNOT_OPEN;
    const Result opened = m_inner->Open(path, flags);
    if (opened != RESULT_OK) {
        m_inner->Close();
        m_inner.reset();
    }
    return opened;
}

Result CACStreamReader::OpenStream(IStream* stream, uint32_t flags) {
    const auto alone = Alone();
    if (m_inner) return m_inner->OpenStream(stream, flags);
    const auto onThrow = [this](bool) { return ForgetSource(), RESULT_FAILED; };  // as in Open
    return AtStreamBorder(onThrow, [&] { return OpenImage(stream, flags); });
}

Result CACStreamReader::OpenImage(IStream* stream, uint32_t flags) {
    m_wave.AttachStream(stream);
    if (!m_wave.ParseChunks()) return RESULT_NOT_WAVE;
    m_wave.SetReadOnly((flags & OPEN_READ_ONLY) != 0);
    m_wave.SetModified(false);
    m_sourceFormat = m_wave.Format();
    if (!m_sourceFormat.IsDirectPcm()) return RESULT_NOT_PCM;
    TakeTags();
    StartAtBeginning();
    return RESULT_OK;
}

// Nobody asks for the chunks after that.
void CACStreamReader::TakeTags() {
    ::TakeTags(m_tags, m_wave.Chunks(), InfoEncodingOf(GetLong(ATTR_INFO_ENCODING)));
    m_wave.Chunks().clear();
}

void CACStreamReader::StartAtBeginning() {
    m_staged.Drop();
    // Also where nothing will be converted: IsConversionFree answers from the formats it gets here.
    m_converter.Configure(m_sourceFormat.channels, static_cast<int32_t>(m_sourceFormat.samplesPerSec),
                          m_outChannels, static_cast<int32_t>(m_outRate));
    m_position = 0;
    m_converter.ResetToOutputPosition(0);
}

// Leaves no source: Read refuses, as it does before the first Open.
void CACStreamReader::ForgetSource() {
    m_wave.CloseFile();
    m_sourceFormat = WaveFormat{};
    m_staged.Drop();
}

Result CACStreamReader::Read(void* buffer, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream) {
    const auto alone = Alone();
    if (m_inner) return m_inner->Read(buffer, frames, framesRead, endOfStream);
    if (!buffer || !framesRead) return RESULT_BAD_ARGUMENT;
    if (endOfStream) *endOfStream = 0;
    *framesRead = 0;
    auto* const output = static_cast<int16_t*>(buffer);
    return AtStreamBorder(RESULT_FAILED, [&] {
        return m_converter.IsConversionFree() ? ReadSourceFrames(output, frames, framesRead, endOfStream)
                                              : ReadConverted(output, frames, framesRead, endOfStream);
    });
}

Result CACStreamReader::ReadConverted(int16_t* output, uint32_t frames, uint32_t* framesRead,
                                      uint8_t* endOfStream) {
    // (2) and (3). The position counts what was made even when a failure keeps it from the host: the
    // converter has moved on, and a Seek from here must start where it stands.
    uint32_t made = 0;
    const Result result =
        m_staged.Convert(m_converter, output, frames, made, [&] { return RefillStaging(endOfStream); });
    m_position = Saturating::Add(m_position, made);
    if (result == RESULT_OK) *framesRead = made;
    return result;
}

Result CACStreamReader::RefillStaging(uint8_t* endOfStream) {
    return m_staged.Refill(
        m_converter.SourceChannels(), [&](int16_t* buffer, uint32_t frames, uint32_t* framesRead) {
            return AtStreamBorder(RESULT_FAILED,
                                  [&] { return ReadSourceFrames(buffer, frames, framesRead, endOfStream); });
        });
}

// Whether there is a direct source whose frames have the size that buffers are laid out for.
Result CACStreamReader::SourceState() const {
    if (!m_wave.HasSource() || m_sourceFormat.formatTag == 0) return RESULT_FAILED;
    if (!m_sourceFormat.IsDirectPcm()) return RESULT_NOT_PCM;
    const uint32_t frameBytes = uint32_t{m_sourceFormat.channels} * m_sourceFormat.bitsPerSample / 8;
    const bool usable = m_sourceFormat.blockAlign != 0 && m_sourceFormat.blockAlign <= frameBytes;
    // A file without a rate keeps the channels it was opened with, whatever was asked for since.
    return usable && m_converter.OutputChannels() == m_outChannels ? RESULT_OK : RESULT_NOT_WAVE;
}

Result CACStreamReader::ReadSourceFrames(int16_t* buffer, uint32_t frames, uint32_t* framesRead,
                                         uint8_t* endOfStream) {
    if (!buffer || !framesRead) return RESULT_BAD_ARGUMENT;
    *framesRead = 0;
    const Result state = SourceState();
    if (state != RESULT_OK) {
        if (endOfStream) *endOfStream = frames != 0;
        return state;
    }
    const uint32_t blockAlign = m_sourceFormat.blockAlign;
    // (1) In 64 bits: the host's number of frames is any number.
    const uint64_t bytes = uint64_t{blockAlign} * frames;
    uint64_t done = 0;
    Result result = RESULT_OK;
    if (m_sourceFormat.bitsPerSample == 8) {
        result = ReadWidened(buffer, bytes, &done);
    } else {
        // ReadData counts in 32 bits. Cut to whole frames, or the next read would begin inside one.
        const uint32_t most = UINT32_MAX - UINT32_MAX % blockAlign;
        uint32_t read = 0;
        result = m_wave.ReadData(static_cast<uint32_t>(std::min<uint64_t>(bytes, most)), buffer, &read);
        done = read;
    }
    // The torn frame at the end of a file cut short is not delivered.
    *framesRead = static_cast<uint32_t>(done / blockAlign);
    if (endOfStream) *endOfStream = *framesRead != frames;
    return result;
}

Result CACStreamReader::ReadWidened(int16_t* buffer, uint64_t bytes, uint64_t* done) {
    uint32_t block = 0;
    uint32_t read = 0;
    Result result = RESULT_OK;
    do {
        // Bytes pass through a buffer of their own: widened in place, the first samples would overwrite bytes
        // that are still to be read. A block may end inside a frame, since each byte is a sample.
        block = static_cast<uint32_t>(std::min<uint64_t>(bytes - *done, kByteBlock));
        if (m_byteBuffer.size() < block) m_byteBuffer.resize(block);
        result = m_wave.ReadData(block, m_byteBuffer.data(), &read);
        std::transform(m_byteBuffer.begin(), m_byteBuffer.begin() + read, buffer + *done, WidenSample);
        *done += read;
    } while (result == RESULT_OK && read == block && *done < bytes);
    // What came before a failure is delivered; the next read meets the failure first.
    return read == 0 && *done != 0 ? RESULT_OK : result;
}

Result CACStreamReader::SeekSourceFrames(uint32_t origin, int64_t offset, int64_t* frame) {
    if (origin > ORIGIN_END) return RESULT_BAD_ARGUMENT;
    const int64_t blockAlign = m_sourceFormat.blockAlign;
    if (blockAlign == 0) return RESULT_NOT_WAVE;
    Result result = RESULT_OK;
    if (origin != ORIGIN_CURRENT || offset != 0)
        result = m_wave.SeekData(Saturating::Mul(blockAlign, offset), origin);
    if (frame) *frame = m_wave.TellData() / blockAlign;
    return result;
}

Result CACStreamReader::Seek(uint32_t origin, int64_t offset, int64_t* position) {
    const auto alone = Alone();
    if (m_inner) return m_inner->Seek(origin, offset, position);
    m_staged.Drop();
    Result result = RESULT_OK;
    if (m_converter.IsConversionFree()) {
        result = SeekSourceFrames(origin, offset, &m_position);
        if (result != RESULT_OK) return result;
    } else if (origin > ORIGIN_END) {
        return RESULT_BAD_ARGUMENT;
    } else if (origin != ORIGIN_CURRENT || offset != 0) {
        result = SeekConverted(origin, offset);
    }
    if (position) *position = m_position;
    return result;
}

Result CACStreamReader::SeekConverted(uint32_t origin, int64_t offset) {
    Result result = RESULT_OK;
    if (origin == ORIGIN_END) {
        // The end is the source's. So the offset goes there in source frames, and what comes back is where
        // the source really stands: held at the ends and rounded down to a frame.
        int64_t source = Saturating::MulDiv(offset, m_converter.InputStep(), m_converter.PhaseCount());
        result = SeekSourceFrames(origin, source, &source);
        m_position = Saturating::MulDiv(source, m_converter.PhaseCount(), m_converter.InputStep());
    } else {
        m_position = origin == ORIGIN_START ? offset : Saturating::Add(m_position, offset);
    }
    // A position past the end stays what was asked for; the source stands at its end and brings no frames.
    m_position = std::max<int64_t>(m_position, 0);
    StandAtPosition();
    return result;
}

// Brings converter and source to m_position: the source stands up to 16 frames in front of it, for the
// filter. A source that can't move returns its code at the next Read.
void CACStreamReader::StandAtPosition() {
    const int64_t frame = m_converter.ResetToOutputPosition(m_position);
    m_wave.SeekData(Saturating::Mul(m_sourceFormat.blockAlign, frame), ORIGIN_START);
}

Result CACStreamReader::GetLength(int64_t* frames) {
    const auto alone = Alone();
    if (m_inner) return m_inner->GetLength(frames);
    if (!frames) return RESULT_BAD_ARGUMENT;
    const WaveFormat& format = m_wave.Format();
    if (format.formatTag != kFormatTagPcm) return RESULT_FAILED;
    if (format.blockAlign == 0 || !m_converter.IsConfigured()) return RESULT_NOT_WAVE;
    *frames = Saturating::MulDiv(m_wave.DataSize() / format.blockAlign, m_converter.PhaseCount(),
                                 m_converter.InputStep());
    return RESULT_OK;
}

Result CACStreamReader::Close() {
    const auto alone = Alone();
    m_wave.CloseFile();
    if (m_inner) m_inner->Close();
    return RESULT_OK;
}

Result CACStreamReader::SetOutputFormat(uint32_t channels, uint32_t rate, uint32_t bytesPerSample) {
    const auto alone = Alone();
    if (bytesPerSample != kOutputBytesPerSample) return RESULT_BAD_ARGUMENT;
    if (m_inner) return m_inner->SetOutputFormat(channels, rate, kOutputBytesPerSample);
    const bool hasSource = m_sourceFormat.channels != 0 && m_sourceFormat.samplesPerSec != 0;
    return AtBorder(RESULT_NO_MEMORY, [&] {
        // The position counts output frames, so at another rate the same moment has another number. Computed
        // while the converter still knows the old rate.
        const int64_t position = RescalePosition(m_position, rate, m_converter.OutputRate());
        // First what may fail: the caller's buffers follow the format that stands.
        if (hasSource)
            m_converter.Configure(m_sourceFormat.channels, static_cast<int32_t>(m_sourceFormat.samplesPerSec),
                                  channels, static_cast<int32_t>(rate));
        m_outChannels = channels;
        m_outRate = rate;
        m_outBytesPerSample = kOutputBytesPerSample;
        m_staged.Drop();
        if (hasSource) {
            m_position = position;
            StandAtPosition();
        }
        return RESULT_OK;
    });
}

Result CACStreamReader::GetOutputFormat(uint32_t* channels, uint32_t* rate, uint32_t* bytesPerSample) {
    const auto alone = Alone();
    if (!channels || !rate || !bytesPerSample) return RESULT_BAD_ARGUMENT;
    if (m_inner) return m_inner->GetOutputFormat(channels, rate, bytesPerSample);
    *channels = m_outChannels;
    *rate = m_outRate;
    *bytesPerSample = m_outBytesPerSample;
    return RESULT_OK;
}

Result CACStreamReader::GetMetadata(IAC3Metadata** metadata) {
    const auto alone = Alone();
    if (m_inner) return m_inner->GetMetadata(metadata);
    return GiveMetadata(metadata, [&](IAC3Metadata& object) {
        TagsToMetadata(m_tags, object);
        return RESULT_OK;
    });
}

Result CACStreamReader::GetSourceFormat(AudioFormatInfo* format) {
    const auto alone = Alone();
    if (!format) return RESULT_BAD_ARGUMENT;
    if (m_inner) return m_inner->GetSourceFormat(format);
    FillFormatInfo(m_sourceFormat, format);
    return RESULT_OK;
}

Result CACStreamReader::GetExtensionCount(uint32_t* count) { return CountReadExtensions(count); }

Result CACStreamReader::GetExtension(uint32_t index, char16_t** extension) {
    return GiveReadExtension(*this, index, extension);
}
