// The reader that a host gets: a WAV file, or a WAV image in a stream, as 16-bit PCM at the host's rate and
// channel count. PCM of 8 and 16 bits it reads by itself; everything else it hands to an inner reader and
// then only forwards. One thread at a time.
//
// Decisions: A frame size of 0, or one in a stream that contradicts channels and bits, returns
// RESULT_NOT_WAVE from the operations that would divide or read by it. Read without a direct source returns
// RESULT_FAILED, or RESULT_NOT_PCM after a stream of another kind. Negative positions count as 0. An origin
// above 2 returns RESULT_BAD_ARGUMENT and moves nothing, with conversion too. Every Open drops an inner
// reader of an earlier one. Read returns no frames at the end and nowhere else, and no division into blocks
// changes a frame. With conversion a source of 24 to 47 frames, and what is read after a Seek to a place from
// which 16 to 47 source frames are left, begins up to 32 source frames late, or with as many passed over:
// shorter ones and longer ones don't. A position query (origin 1, offset 0) drops the staged block: with
// conversion, ask where no frame may be missed only after a Read that used its block up, or count what was
// read. The tags are read at Open, by the
// ATTR_INFO_ENCODING that is set then.
#pragma once

#include <memory>
#include <vector>

#include "AudioCodec/metadata/TagList.h"
#include "AudioCodec/shell/templates/BaseImpl.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "AudioCodec/wave/InnerReader.h"
#include "AudioCodec/wave/converter/CStagedFrames.h"
#include "AudioCodec/wave/riff/CWaveFile.h"

class CACStreamReader : public CAttributeContainerImpl<IAC3StreamReader> {
public:
    CACStreamReader();  // throws std::bad_alloc
    ~CACStreamReader() override;

    Result Open(const char16_t* path, uint32_t flags) override;
    Result Seek(uint32_t origin, int64_t offset, int64_t* position) override;
    Result Read(void* buffer, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream) override;
    Result GetLength(int64_t* frames) override;
    Result Close() override;
    Result SetOutputFormat(uint32_t channels, uint32_t rate, uint32_t bytesPerSample) override;
    Result GetOutputFormat(uint32_t* channels, uint32_t* rate, uint32_t* bytesPerSample) override;
    Result GetMetadata(IAC3Metadata** metadata) override;
    Result GetSourceFormat(AudioFormatInfo* format) override;
    Result GetExtensionCount(uint32_t* count) override;
    Result GetExtension(uint32_t index, char16_t** extension) override;
    Result OpenStream(IStream* stream, uint32_t flags) override;

protected:
    Result InternalQueryInterface(const GUID* iid, void** object) override;
    const char16_t* GetClassName() override;

private:
    Result OpenFile(const char16_t* path, uint32_t flags);
    Result OpenInner(const char16_t* path, uint32_t flags);
    Result OpenImage(IStream* stream, uint32_t flags);
    void TakeTags();
    void StartAtBeginning();
    void ForgetSource();

    Result SourceState() const;
    Result ReadConverted(int16_t* output, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream);
    Result RefillStaging(uint8_t* endOfStream);
    Result ReadSourceFrames(int16_t* buffer, uint32_t frames, uint32_t* framesRead, uint8_t* endOfStream);
    Result ReadWidened(int16_t* buffer, uint64_t bytes, uint64_t* done);
    Result SeekSourceFrames(uint32_t origin, int64_t offset, int64_t* frame);
    Result SeekConverted(uint32_t origin, int64_t offset);
    void StandAtPosition();

    CWaveFile m_wave;
    WaveFormat m_sourceFormat;
    TagList m_tags;                     // of every file opened so far: for each attribute the latest
    std::vector<uint8_t> m_byteBuffer;  // raw 8-bit audio; grows when needed, within bounds
    uint32_t m_outChannels = 2;
    uint32_t m_outRate = 44100;
    uint32_t m_outBytesPerSample = 2;
    int64_t m_position = 0;  // in output frames; without conversion as of the last Seek
    CStagedFrames m_staged;
    CSampleRateConverter m_converter;
    std::unique_ptr<InnerReader> m_inner;
};
