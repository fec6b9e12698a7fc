#include "capi/handles/WaveObjects.h"

#include "capi/ModuleFailure.h"
#include "capi/TagTransfer.h"
#include "capi/TextEncoding.h"
#include "capi/audio/ModuleReaders.h"
#include "platform/base/Utf.h"

RefPtr<IAC3Writer> OpenWriter(const Module& module, const AudioShape& input, uint32_t formatIndex,
                              vlw_text text, const std::string& path, const FileLabel& label) {
    RefPtr<IAC3Writer> writer;
    const auto require = [&](Result result) { RequireModule(result, "Beginning to write", label); };
    require(module.CreateCodec()->CreateWriter(writer.Put()));
    SetEncoding(*writer, text);
    require(writer->SetBool(ATTR_EDIT_CHANGED_ONLY, 1));
    require(writer->SetFormat(input.channels, input.rate, kBytesPerSample));
    require(writer->SelectFormat(formatIndex));
    require(writer->Open(Utf::FromUtf8(path).c_str(), OPEN_OVERWRITE));
    return writer;
}

void GiveTags(IAC3Writer& writer, const Tags& tags) {
    const auto require = [](Result result) { RequireModule(result, "Handing the tags to", "the module"); };
    RefPtr<IAC3Metadata> metadata;
    require(writer.GetMetadata(metadata.Put()));  // a new, empty object
    StoreTags(tags, *metadata);
    require(writer.SetMetadata(metadata.Get()));
}

RefPtr<IAC3StreamReader> OpenReader(const Module& module, vlw_text text, const std::string& path,
                                    const FileLabel& label) {
    RefPtr<IAC3StreamReader> reader;
    const auto require = [&](Result result) { RequireModule(result, "Reading back", label); };
    require(module.CreateCodec()->CreateStreamReader(reader.Put()));
    SetEncoding(*reader, text);
    require(reader->Open(Utf::FromUtf8(path).c_str(), OPEN_READ_ONLY));
    return reader;
}

Tags TagsOf(IAC3StreamReader& reader) {
    RefPtr<IAC3Metadata> metadata;
    RequireModule(reader.GetMetadata(metadata.Put()), "Reading the tags of", "the written file");
    return ReadTags(*metadata);
}
