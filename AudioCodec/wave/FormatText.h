// Finds a display text in the module's string resources. Any thread.
#pragma once

#include <cstdint>

#include "AudioCodec/shell/object/IMemory.h"

// Gives the text `id` in a copy from `memory`, terminated; who asked gives it back with Free. `language` is a
// language id of the platform: the text is in the usual form of that language, whatever its region, else in
// English. *text stays as it was if there is no such text, or no memory.
void LoadFormatText(IMemory& memory, uint32_t id, uint32_t language, char16_t** text);
