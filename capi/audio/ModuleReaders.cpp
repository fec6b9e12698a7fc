#include "capi/audio/ModuleReaders.h"

#include <filesystem>
#include <string_view>

#include "capi/ModuleFailure.h"
#include "capi/OptionalLibrary.h"
#include "capi/SystemFailure.h"
#include "capi/posix/Descriptor.h"
#include "platform/base/Utf.h"

namespace {

// A WAV file of A-law with two frames of silence, mono at 8000 Hz. A reader that has opened a file to be
// decoded decodes every stream after it.
constexpr std::string_view kToDecode(
    "RIFF\x28\0\0\0WAVE"
    "fmt \x12\0\0\0\x06\0\x01\0\x40\x1F\0\0\x40\x1F\0\0\x01\0\x08\0\0\0"
    "data\x02\0\0\0\xD5\xD5",
    48);

}  // namespace

RefPtr<IAC3StreamReader> ModuleReaders::NewReader() const {
    RefPtr<IAC3StreamReader> reader;
    RequireModule(m_module.CreateCodec()->CreateStreamReader(reader.Put()), "Making a reader of",
                  m_module.Path());
    return reader;
}

IAC3StreamReader& ModuleReaders::Direct() {
    if (!m_direct) m_direct = NewReader();
    return *m_direct;
}

// The decoder's library lies beside the module, wherever that is.
std::string ModuleReaders::WhyNoDecoder() const {
    const auto library = std::filesystem::path(m_module.Path()).parent_path() / kDecoderLibrary.file;
    const std::string missing = TryOptionalLibrary(kDecoderLibrary, library.string());
    return missing.empty() ? "the module found no decoder." : missing;
}

IAC3StreamReader& ModuleReaders::Decoding() {
    if (m_decoding) return *m_decoding;
    RefPtr<IAC3StreamReader> reader = NewReader();
    Descriptor file;
    RequireSystem(file.MakeInMemory(), "Making", "a file in memory");
    RequireSystem(file.Write(kToDecode.data(), kToDecode.size()), "Writing", "a file in memory");
    const Result opened = reader->Open(Utf::FromUtf8(file.ReopeningPath()).c_str(), OPEN_READ_ONLY);
    if (opened == RESULT_NO_MEMORY) throw std::bad_alloc();
    if (opened != RESULT_OK)
        throw Failure(VLW_NO_DECODER, "Audio that isn't plain PCM can't be decoded here: " + WhyNoDecoder());
    m_decoding = std::move(reader);
    return *m_decoding;
}
