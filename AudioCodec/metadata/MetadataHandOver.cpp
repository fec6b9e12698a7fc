#include "AudioCodec/metadata/MetadataHandOver.h"

Result KeepMetadata(IAC3Metadata* source, RefPtr<IAC3Metadata>& kept) {
    if (!source) return RESULT_BAD_ARGUMENT;
    if (!kept) {
        const Result created = CreateMetadataObject(kept.Put());
        if (created != RESULT_OK) return created;
    }
    const Result copied = kept->CopyFrom(source);
    if (copied != RESULT_OK) kept.Reset();
    return copied;
}
