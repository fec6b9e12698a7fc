// Frames at another rate, or of another channel count, as the module's converter makes them: a reader of the
// module reads the source's frames as if they were a WAV file. A seek lets it begin at the start of a cycle
// of the ratio, far enough in front that the filter has forgotten the beginning, and drops what comes before
// the place: so the samples are those of a straight read.
#pragma once

#include <memory>

#include "AudioCodec/wave/converter/ConversionRatio.h"
#include "capi/audio/FrameSource.h"
#include "capi/audio/ModuleReaders.h"

struct ConversionTarget {
    uint32_t rate;  // frames per second
    uint32_t channels;
};

// The converter needs so many source frames to begin as usual; of a source that has fewer, silence follows.
inline constexpr int64_t kLeastSourceFrames = 48;

// How many frames come of so many source frames.
int64_t ConvertedLength(int64_t frames, uint32_t fromRate, uint32_t toRate);
// Of these the first so many that the module's writer passes over where it converts: it begins with the frame
// whose step leads on from the source's first one.
int64_t PassedOverByWriter(uint32_t fromRate, uint32_t toRate);
// How many frames the module's writer makes of so many. Of a source that is shorter than its filter's
// beginning it gives the share that is full, one at the least.
int64_t LengthByWriter(int64_t frames, uint32_t fromRate, uint32_t toRate);

class ConvertedFrames final : public FrameSource {
public:
    // Borrows the source, whose frames are to be `sourceRate`. Throws Failure.
    ConvertedFrames(const ModuleReaders& readers, FrameSource& source, uint32_t sourceRate,
                    const ConversionTarget& target);
    ~ConvertedFrames() override;

    size_t Read(int16_t* buffer, size_t frames) override;
    void SeekTo(int64_t frame) override;
    int64_t Position() const override { return m_position; }
    uint32_t Channels() const override { return m_channels; }

private:
    class SourceStream;

    int64_t CyclesBefore(int64_t frame) const;
    void Stand();
    size_t ReadSome(int16_t* buffer, size_t frames);

    const uint32_t m_sourceRate;
    const uint32_t m_rate;
    const ConversionRatio m_ratio;
    const uint32_t m_channels;
    std::unique_ptr<SourceStream> m_stream;
    RefPtr<vlacwav3::IAC3StreamReader> m_reader;
    int64_t m_position = 0;
    int64_t m_standsAt = 0;  // the module's next frame; negative: it must be moved first
};
