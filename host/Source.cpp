#include "host/Source.h"

#include <fmt/format.h>

#include "host/AifName.h"
#include "host/Failure.h"
#include "host/FormatScan.h"
#include "host/Require.h"
#include "platform/base/Utf.h"

namespace {

constexpr uint32_t kBytesPerSample = 2;
constexpr uint32_t kCountedBlock = 16384;  // frames

}  // namespace

Source::Source(const Module& module, const std::string& path) {
    Require(module.CreateCodec()->CreateStreamReader(m_reader.Put()));
    {
        const AifName name(path);  // the reader keeps the file open by itself
        Require(m_reader->Open(Utf::FromUtf8(name.Path()).c_str(), OPEN_READ_ONLY));
    }
    ReadFormat(path);
    SetOutput(m_format.channels, m_format.rate);
}

void Source::ReadFormat(const std::string& path) {
    AudioFormatInfo info{};
    const Result result = m_reader->GetSourceFormat(&info);
    m_format.direct = result == RESULT_OK;
    if (m_format.direct) {
        m_format.channels = info.channels;
        m_format.rate = info.samplesPerSec;
        m_format.bits = info.bitsPerSample;
    } else if (result == RESULT_NOT_SUPPORTED) {
        uint32_t bytes = 0;
        Require(m_reader->GetOutputFormat(&m_format.channels, &m_format.rate, &bytes));
        if (const std::optional<AudioShape> shape = ScanShape(path)) {
            m_format.channels = shape->channels;
            m_format.rate = shape->rate;
        }
    } else {
        Require(result);
    }
    if (m_format.channels == 0 || m_format.rate == 0)
        throw Failure("The file's header names no channels or no sample rate; it can't be played as it is.",
                      RESULT_NOT_WAVE);
}

void Source::SetOutput(uint32_t channels, uint32_t rate) {
    if (!CanMix(m_format.channels, channels))
        throw Failure(fmt::format("{} channels can't be made of {}; ask for 1 or {} with --channels.",
                                  channels, m_format.channels, m_format.channels),
                      RESULT_NOT_SUPPORTED);
    Require(m_reader->SetOutputFormat(channels, rate, kBytesPerSample));
    m_outChannels = channels;
}

RefPtr<IAC3Metadata> Source::Metadata() const {
    RefPtr<IAC3Metadata> metadata;
    Require(m_reader->GetMetadata(metadata.Put()));
    return metadata;
}

int64_t Source::CountFrames() {
    if (m_format.direct) return Length();
    std::vector<int16_t> block(size_t{kCountedBlock} * m_outChannels);
    int64_t total = 0;
    while (const uint32_t frames = Read(block)) total += frames;
    return total;
}

int64_t Source::Length() const {
    int64_t frames = 0;
    Require(m_reader->GetLength(&frames));
    return frames;
}

uint32_t Source::Read(std::vector<int16_t>& buffer) {
    uint32_t done = 0;
    uint8_t shortBlock = 0;  // no end: a converter may still hold frames back
    const auto frames = static_cast<uint32_t>(buffer.size() / m_outChannels);
    Require(m_reader->Read(buffer.data(), frames, &done, &shortBlock));
    return done;
}
