// The writer that a host gets: takes 16-bit PCM in the host's format and writes a PCM WAV file in one of the
// stock formats, converted where rate or channels differ, narrowed where the file has 8 bits. Metadata goes
// into the file at Close. One thread at a time.
//
// Decisions: Open refuses an input format that can't be converted into the selected one, before a file is
// touched, and without a selected one makes a new file but empties none; an Open while a file is being
// written completes that one first, as Close does. After a failed Open no file is left open. Audio after the
// start and after a Seek is gathered up to one filling of the converter, so that a file doesn't depend on the
// sizes of the blocks; an input shorter than those 48 frames is filled up with silence for the filter and
// brings its share of frames. Seek with conversion gives up the tail that the filter still holds, as Close
// doesn't. Negative positions count as 0, an origin above 2 returns RESULT_BAD_ARGUMENT and moves nothing,
// and so do null receivers. Offsets are held within 64 bits instead of being cut. A file doesn't grow beyond
// 4 GiB: Write returns RESULT_WRITE_FAILED there. Without memory Open returns RESULT_FAILED, Write and Close
// RESULT_NO_MEMORY, and Close ends the file without its tags. ATTR_EDIT_CHANGED_ONLY and ATTR_INFO_ENCODING
// are looked at when the tags go in, at Close. With the first a number that its chunk wouldn't give back goes
// into "vltg"; else both roads make one file.
#pragma once

#include <vector>

#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/metadata/TagList.h"
#include "AudioCodec/shell/templates/BaseImpl.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "AudioCodec/wave/converter/CSampleRateConverter.h"
#include "AudioCodec/wave/riff/CWaveFile.h"
#include "platform/com/RefPtr.h"

class CACWriter : public CAttributeContainerImpl<IAC3Writer> {
public:
    CACWriter();  // throws std::bad_alloc
    ~CACWriter() override;

    Result Open(const char16_t* path, uint32_t flags) override;
    Result Seek(uint32_t origin, int64_t offset, int64_t* position) override;
    Result Write(const void* buffer, uint32_t frames, uint32_t* framesAccepted) override;
    Result GetLength(uint64_t* frames) override;
    Result Close() override;
    Result SetFormat(uint32_t channels, uint32_t rate, uint32_t bytesPerSample) override;
    Result GetFormat(uint32_t* channels, uint32_t* rate, uint32_t* bytesPerSample) override;
    Result SetMetadata(IAC3Metadata* metadata) override;
    Result GetMetadata(IAC3Metadata** metadata) override;
    Result SelectFormat(uint32_t index) override;
    Result GetSelectedFormat(uint32_t* index, AudioFormatInfo* format, char16_t** text) override;
    Result GetFormatCount(uint32_t* count) override;
    Result GetFormatInfo(uint32_t index, AudioFormatInfo* format, char16_t** text) override;

protected:
    Result InternalQueryInterface(const GUID* iid, void** object) override;
    const char16_t* GetClassName() override;

private:
    Result OpenFile(const char16_t* path, uint32_t flags);
    bool IsInputConvertible() const;
    Result CompleteFile();
    void StoreTags();

    Result WriteDirect(const int16_t* frames, uint32_t count, uint32_t* accepted);
    Result WriteConverted(const int16_t* frames, uint32_t count, uint32_t* accepted);
    void ExpectFirstBlock();
    Result Gather(const int16_t*& input, uint32_t& remaining);
    Result ConvertGathered(uint64_t mostOutput);
    Result Convert(const int16_t*& input, uint32_t& remaining, uint64_t mostOutput);
    void FlushGathered();
    void DrainConverter();

    Result WriteFrames(const int16_t* frames, uint32_t count);
    Result WriteNarrowed(const int16_t* samples, uint32_t count);
    Result SeekFileFrames(uint32_t origin, int64_t offset, int64_t* frame);
    Result SeekConverted(uint32_t origin, int64_t offset);

    CWaveFile m_wave;
    bool m_formatSelected = false;  // and the writer isn't closed yet
    WaveFormat m_fileFormat;
    WaveFormat m_inputFormat;
    std::vector<uint8_t> m_byteBuffer;  // 8-bit audio on its way into the file; bounded
    uint64_t m_framesWritten = 0;       // input frames accepted since the writer was made
    uint32_t m_formatIndex = 0;
    RefPtr<CMetadata> m_metadata;  // for Close
    TagList m_tags;
    CSampleRateConverter m_converter;
    int64_t m_position = 0;           // in input frames
    std::vector<int16_t> m_gathered;  // the first input after a reset of the converter
    bool m_gathering = false;         // there isn't enough of it yet
};
