// Finds a display text in the module's string resources. Any thread.
#pragma once

#include <cstdint>

#include "AudioCodec/shell/object/IMemory.h"

// Returns a copy of the text `id` from `memory`, terminated; the caller returns it with Free. `language` is a
// language id of the platform: the text is in the usual form of that language, whatever its region, else in
// English. *text stays as it was if there is no such text, or no memory.
void LoadFormatText(IMemory& memory, uint32_t id, uint32_t language, char16_t** text);
