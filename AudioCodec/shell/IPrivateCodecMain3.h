// The codec main object, a host's way to everything else. DllVlGetClassObject (Exports.h) returns one for
// CLSID_VlACWav3. Any thread may call it. The order of the operations is the binary border: nothing moves,
// nothing is added.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"

namespace vlacwav3 {

struct IAC3Reader;
struct IAC3StreamReader;
struct IAC3Writer;
struct IAC3MetadataEditor;

struct IPrivateCodecMain3 : IAttributeContainer64 {
    // Each makes a new object with one reference, which lives on after this one. RESULT_OK; otherwise the
    // receiver's pointer is null: RESULT_NO_MEMORY, RESULT_BAD_ARGUMENT for a null receiver.
    virtual Result CreateReader(IAC3Reader** reader /*out: the object is an IAC3StreamReader*/) = 0;
    virtual Result CreateWriter(IAC3Writer** writer /*out*/) = 0;
    virtual Result CreateMetadataEditor(const char16_t* path /*in: the file, opened by the editor's Open*/,
                                        IAC3MetadataEditor** editor /*out*/) = 0;
    virtual Result CreateUnsupported() = 0;  // always RESULT_NOT_SUPPORTED
    virtual Result CreateStreamReader(IAC3StreamReader** reader /*out*/) = 0;
    // Sets the five capability attributes to true. RESULT_OK, RESULT_NO_MEMORY.
    virtual Result InitCapabilities() = 0;

protected:
    ~IPrivateCodecMain3() = default;
};

inline constexpr GUID IID_IPrivateCodecMain3 = MakeGuid("23136ACD-57D3-4A8E-A5DB-0EDD5DC5DF64");

}  // namespace vlacwav3
