// The codec main object: tells a host what the codec is and makes its readers, writers and editors, which
// then live without it. It has no state but its attributes; any thread.
#pragma once

#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "AudioCodec/shell/templates/BaseImpl.h"

class CPrivateCodecMain : public CAttributeContainerImpl<IPrivateCodecMain3> {
public:
    CPrivateCodecMain();  // throws std::bad_alloc

    Result CreateReader(IAC3Reader** reader) override;
    Result CreateWriter(IAC3Writer** writer) override;
    Result CreateMetadataEditor(const char16_t* path, IAC3MetadataEditor** editor) override;
    Result CreateUnsupported() override;
    Result CreateStreamReader(IAC3StreamReader** reader) override;
    Result InitCapabilities() override;

    Result InternalQueryInterface(const GUID* iid, void** object) override;
    const char16_t* GetClassName() override;
};
