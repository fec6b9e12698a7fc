// The language of the user's surroundings.
#pragma once

#include <string>

// A tag like "de-AT", by LC_ALL, LC_MESSAGES and LANG, of which the first that isn't empty counts
// (POSIX.1-2017, 8.2). Empty, for English, where none says anything or it says "C" or "POSIX".
std::string UserLanguage();
