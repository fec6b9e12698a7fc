// The frames of a source at its own rate and channels, read or decoded by the module. A seek begins at the
// last place where decoding can begin, and drops what comes before the frame.
#pragma once

#include "AudioCodec/wave/IAC3StreamReader.h"
#include "capi/audio/AudioStream.h"
#include "capi/audio/FrameSource.h"
#include "capi/audio/ModuleReaders.h"

class SourceFrames final : public FrameSource {
public:
    // All are borrowed. Throws Failure: VLW_NO_DECODER, VLW_DAMAGED, and what the input throws.
    SourceFrames(ModuleReaders& readers, Input& input, const SourceFacts& facts);
    ~SourceFrames() override;

    size_t Read(int16_t* buffer, size_t frames) override;
    void SeekTo(int64_t frame) override;
    int64_t Position() const override { return m_position; }
    uint32_t Channels() const override { return m_facts.channels; }

    // After the end: whether less came than the file promises.
    bool EndedEarly() const;

private:
    void Open();
    std::optional<int64_t> Length() const;
    bool CanJump() const { return m_facts.unit.bytes != 0 && m_facts.unit.standsAlone; }
    int64_t UnitStart(int64_t frame) const;
    uint64_t ByteOf(int64_t unitStart) const;
    void KeepUnit();
    void Release();
    void Stand();
    size_t ReadSome(int16_t* buffer, size_t frames);

    Input& m_input;
    const SourceFacts& m_facts;
    AudioStream m_stream;
    vlacwav3::IAC3StreamReader& m_reader;
    int64_t m_position = 0;
    int64_t m_standsAt = 0;     // where the module's next frame is
    bool m_isOpen = false;      // the module's reader reads from here
    std::exception_ptr m_last;  // what ended an input that can't be read again
};
