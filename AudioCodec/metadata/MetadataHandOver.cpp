#include "AudioCodec/metadata/MetadataHandOver.h"

Result KeepMetadata(IAC3Metadata* source, RefPtr<CMetadata>& kept) {
    if (!source) return RESULT_BAD_ARGUMENT;
    if (!kept) {
        const Result created = CreateObject<CMetadata>(kept.Put());
        if (created != RESULT_OK) return created;
    }
    const Result copied = kept->Merge(*source);
    if (copied != RESULT_OK) kept.Reset();
    return copied;
}
