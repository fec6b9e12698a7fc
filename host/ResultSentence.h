// The module's result codes as sentences: what happened and what to do about it.
#pragma once

#include <string>

#include "AudioCodec/shell/object/ResultCodes.h"

// One sentence for any code; a code that the module doesn't define is told by its number.
std::string SentenceOf(Result code);
