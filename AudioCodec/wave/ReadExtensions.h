// The file extensions that the readers tell to hosts.
#pragma once

#include <cstdint>

#include "AudioCodec/shell/object/IMemory.h"

// Stores the number of extensions, if the pointer isn't null. Always RESULT_OK.
Result CountReadExtensions(uint32_t* count);

// Returns an extension without its dot, allocated by `memory` and owned by the caller. RESULT_BAD_EXTENSION
// for a null pointer or an unknown index, which gets an empty text; RESULT_NO_MEMORY.
Result GiveReadExtension(IMemory& memory, uint32_t index, char16_t** extension);
