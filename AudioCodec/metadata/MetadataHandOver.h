// How reader, writer and editor hand metadata over the border: always as a copy, in either direction.
#pragma once

#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/shell/object/Border.h"
#include "platform/com/RefPtr.h"

// Merges a caller's object into the copy that its owner keeps, which is made first if there is none. Returns
// RESULT_BAD_ARGUMENT for a null source, RESULT_NO_MEMORY where not all of it could be copied; nothing is
// kept then.
Result KeepMetadata(IAC3Metadata* source, RefPtr<CMetadata>& kept);

// Hands the caller a new object with one reference, as `fill` leaves it. RESULT_BAD_ARGUMENT for a null
// receiver; otherwise what the creation or `fill` returns, RESULT_NO_MEMORY for an exception, and the
// receiver is null then.
template <class Fill>
Result GiveMetadata(IAC3Metadata** receiver, Fill&& fill) noexcept {
    if (!receiver) return RESULT_BAD_ARGUMENT;
    *receiver = nullptr;
    RefPtr<CMetadata> object;
    Result result = CreateObject<CMetadata>(object.Put());
    if (result == RESULT_OK) result = AtBorder(RESULT_NO_MEMORY, [&] { return fill(*object); });
    if (result == RESULT_OK) *receiver = object.Detach();
    return result;
}
