// The reader of compressed WAV, of PCM of other sample sizes and of AIFF: a graph with the platform's audio
// decoder in the middle. Owned directly by the stream reader that forwards to it.
#pragma once

#include "AudioCodec/graph/CACReader.h"

class CACMWAVReader : public CACReader {
public:
    CACMWAVReader();  // throws std::bad_alloc
    ~CACMWAVReader() override;

    Result GetExtensionCount(uint32_t* count) override;
    Result GetExtension(uint32_t index, char16_t** extension) override;

protected:
    Result InternalQueryInterface(const GUID* iid, void** object) override;
    const char16_t* GetClassName() override;
    Result ConnectGraph(IBaseFilter* source, IBaseFilter* streamReader) override;
};
