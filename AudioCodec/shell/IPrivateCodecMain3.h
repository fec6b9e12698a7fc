// The codec main object, a host's way to everything else. DllVlGetClassObject returns one for CLSID_VlACWav3.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"

struct IAC3Reader;
struct IAC3StreamReader;
struct IAC3Writer;
struct IAC3MetadataEditor;

// The factories give a new object with one reference, 4 for a null pointer, 2 if the object can't be created.
struct IPrivateCodecMain3 : IAttributeContainer64 {
    virtual Result CreateReader(IAC3Reader** reader /*out: the object is an IAC3StreamReader*/) = 0;
    virtual Result CreateWriter(IAC3Writer** writer /*out*/) = 0;
    virtual Result CreateMetadataEditor(const char16_t* path /*in: the file, opened by the editor's Open*/,
                                        IAC3MetadataEditor** editor /*out*/) = 0;
    virtual Result CreateUnsupported() = 0;  // always 5
    virtual Result CreateStreamReader(IAC3StreamReader** reader /*out*/) = 0;
    virtual Result InitCapabilities() = 0;  // sets the five capability attributes to true

protected:
    ~IPrivateCodecMain3() = default;
};

inline constexpr GUID IID_IPrivateCodecMain3 = MakeGuid("23136ACD-57D3-4A8E-A5DB-0EDD5DC5DF64");
