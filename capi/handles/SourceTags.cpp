#include "capi/handles/SourceTags.h"

#include "capi/ModuleFailure.h"
#include "capi/TagTransfer.h"
#include "capi/TextEncoding.h"
#include "capi/handles/ListFile.h"
#include "platform/base/CodePage1252.h"
#include "platform/base/Utf.h"

namespace {

// Text of no told encoding: UTF-8 where it is that.
std::string Decoded(const std::string& bytes) {
    if (bytes.empty() || IsUtf8(bytes)) return bytes;
    std::u16string units(bytes.size(), u'\0');
    const auto count = static_cast<int>(bytes.size());
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), count, units.data(), count);
    return Utf::ToUtf8(units);
}

// The tags that the module finds in a list.
Tags ReadListTags(const ModuleReaders& readers, ListFile& list, vlw_text text) {
    const RefPtr<IAC3StreamReader> reader = readers.NewReader();
    SetEncoding(*reader, text);
    const Result opened = reader->OpenStream(&list, OPEN_READ_ONLY);
    list.ThrowFailure();
    RequireModule(opened, "Reading the tags of", FileLabel::OfSource());
    RefPtr<IAC3Metadata> metadata;
    const Result result = reader->GetMetadata(metadata.Put());
    reader->Close();
    RequireModule(result, "Reading the tags of", FileLabel::OfSource());
    return ReadTags(*metadata);
}

}  // namespace

Tags ReadSourceTags(const ModuleReaders& readers, Input& input, const SourceFacts& facts, vlw_text text) {
    Tags tags;
    ListFile list(input, facts);
    if (list.HasEntries()) tags = ReadListTags(readers, list, text);
    for (const auto& [keyword, bytes] : facts.texts)
        if (!tags.Find(keyword.c_str())) tags.Set(keyword.c_str(), Decoded(bytes).c_str());
    return tags;
}
