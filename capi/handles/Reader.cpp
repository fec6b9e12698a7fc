#include "capi/handles/Reader.h"

#include <algorithm>

#include "capi/FormatLimits.h"
#include "capi/audio/ChannelMix.h"
#include "capi/handles/Id3Tags.h"
#include "capi/handles/SourceTags.h"
#include "capi/input/SourceScan.h"

namespace {

constexpr size_t kPassedOver = 8192;  // samples in a block that nobody wants

}  // namespace

void Reader::SetOutput(uint32_t rate, uint32_t channels) {
    if (rate != 0 && !FormatLimits::IsRate(rate))
        throw Failure(VLW_UNSUPPORTED, "Rates are 1000 to 768000 frames per second.");
    if (channels > FormatLimits::kMostChannels)
        throw Failure(VLW_UNSUPPORTED, "There are 255 channels at the most.");
    if (m_file && m_file->wasRead)
        throw Failure(VLW_BAD_STATE, "The file's first frame has been read; its output stays as it is.",
                      Label().path);
    const uint32_t channelsBefore = std::exchange(m_channels, channels);
    try {
        if (m_file) RequireChannels(m_file->facts);
    } catch (...) {
        m_channels = channelsBefore;
        throw;
    }
    m_rate = rate;
    if (!m_file) return;
    if (m_file->stages) m_file->stages->Drop();
    m_file->last = nullptr;
    m_file->position = 0;
}

ConversionTarget Reader::Target(const SourceFacts& facts) const {
    return {m_rate != 0 ? m_rate : facts.rate, m_channels != 0 ? m_channels : facts.channels};
}

void Reader::RequireChannels(const SourceFacts& facts) const {
    const uint32_t to = Target(facts).channels;
    if (!CanMix(facts.channels, to, facts.channelMask))
        throw Failure(VLW_UNSUPPORTED, std::to_string(to) + " channels can't be made of " +
                                           std::to_string(facts.channels) + "; one can.");
}

void Reader::Open(std::unique_ptr<Input> input) {
    Close();
    auto file = std::make_unique<OpenFile>();
    file->input = std::move(input);
    file->facts = ScanSource(*file->input);
    RequireChannels(file->facts);
    if (!m_readers) m_readers = std::make_unique<ModuleReaders>(m_module.Get());
    // Loading decoders costs many times what the head does. Where only they tell whether there is any audio,
    // they come first all the same.
    if (!m_late || !file->facts.IsSure()) OpenSource(*file);
    m_file = std::move(file);
}

void Reader::OpenSource(OpenFile& file) {
    if (!file.stages) file.stages = std::make_unique<SourceStages>(*m_readers, *file.input, file.facts);
}

void Reader::Close() noexcept { m_file.reset(); }

FrameSource& Reader::LastStage() {
    OpenFile& file = *m_file;
    if (file.last) return *file.last;
    OpenSource(file);
    FrameSource& last = file.stages->Build(Target(file.facts));
    last.SeekTo(file.position);
    file.last = &last;
    return last;
}

Tags Reader::ReadTags() {
    Tags tags = ReadListTags();
    FillTags(tags, ReadId3Tags());
    return tags;
}

Tags Reader::ReadListTags() { return ReadSourceTags(*m_readers, *m_file->input, m_file->facts, m_text); }

Tags Reader::ReadId3Tags() { return ::ReadId3Tags(*m_file->input, m_file->facts); }

std::unique_ptr<SourceChunks> Reader::BeginChunks() const {
    if (!IsSeekable())
        throw Failure(VLW_NOT_SEEKABLE, Label().First() + " gives its bytes in order only.", Label().path);
    return std::make_unique<SourceChunks>(*m_file->input, m_file->facts);
}

bool Reader::FindChunk(uint64_t index, vlw_chunk& found) {
    OpenFile& file = *m_file;
    if (!file.chunks || file.chunksPassed > index) {
        file.chunks = BeginChunks();
        file.chunksPassed = 0;
    }
    while (file.chunksPassed <= index) {
        if (!file.chunks->Next()) {
            file.chunks.reset();
            return false;
        }
        ++file.chunksPassed;
    }
    const Chunk& chunk = file.chunks->Current();
    StoreLE32(reinterpret_cast<uint8_t*>(found.id), chunk.id);
    StoreLE32(reinterpret_cast<uint8_t*>(found.type), file.chunks->ListType());
    found.offset = chunk.offset;
    found.bytes = chunk.declared;
    return true;
}

uint64_t Reader::CountChunks() {
    const std::unique_ptr<SourceChunks> chunks = BeginChunks();
    uint64_t count = 0;
    while (chunks->Next()) ++count;
    return count;
}

uint32_t Reader::Rate() const { return Target(m_file->facts).rate; }

uint32_t Reader::Channels() const { return Target(m_file->facts).channels; }

int64_t Reader::Frames() const {
    const SourceFacts& facts = m_file->facts;
    return facts.frames ? ConvertedLength(*facts.frames, facts.rate, Rate()) : VLW_UNKNOWN;
}

vlw_code Reader::SeekTo(int64_t frame) {
    if (frame < 0)
        throw Failure(VLW_BAD_ARGUMENT, "A place before the start can't be gone to.", Label().path);
    if (!IsSeekable())
        throw Failure(VLW_NOT_SEEKABLE, Label().First() + " gives its bytes in order only.", Label().path);
    FrameSource& last = LastStage();
    const int64_t length = Frames();
    if (length == VLW_UNKNOWN) {
        PassOver(last, frame);
    } else {
        m_file->position = std::min(frame, length);
        last.SeekTo(m_file->position);
    }
    return m_file->position < frame ? VLW_END : VLW_OK;
}

// Only reading tells whether there are so many frames. A failure leaves the place as it was.
void Reader::PassOver(FrameSource& last, int64_t frame) {
    std::vector<int16_t> block(std::max<size_t>(kPassedOver, last.Channels()));
    try {
        if (frame < last.Position()) last.SeekTo(0);
        while (last.Position() < frame) {
            const auto left = static_cast<size_t>(frame - last.Position());
            if (last.Read(block.data(), std::min(left, block.size() / last.Channels())) == 0) break;
        }
        m_file->position = last.Position();
    } catch (...) {
        last.SeekTo(m_file->position);
        throw;
    }
}

vlw_code Reader::Read(int16_t* buffer, size_t frames, size_t& done) {
    OpenFile& file = *m_file;
    FrameSource& last = LastStage();
    file.wasRead = file.wasRead || frames != 0;
    const uint32_t channels = last.Channels();
    done = 0;
    while (done < frames) {
        const size_t got = last.Read(buffer + done * channels, frames - done);
        if (got == 0) return file.stages->Source().EndedEarly() ? VLW_CUT : VLW_END;
        done += got;
        file.position += static_cast<int64_t>(got);
    }
    return VLW_OK;
}

Failure Reader::CutReason() const {
    const SourceFacts& facts = m_file->facts;
    std::string how = Label().First() + " ends early";
    // Before the first is read only the bytes tell how many frames of some codecs there are.
    const int64_t read = m_file->stages ? m_file->stages->Source().Position() : 0;
    const int64_t there = facts.frames.value_or(read);
    if (facts.promised && (facts.frames || there != 0))
        how += ": " + std::to_string(there) + " of " + std::to_string(*facts.promised) +
               " promised frames are there";
    else if (facts.audioBytes && facts.declaredBytes)
        how += ": " + std::to_string(*facts.audioBytes) + " of " + std::to_string(*facts.declaredBytes) +
               " promised bytes of audio are there";
    return {VLW_CUT, how + '.', Label().path};
}
