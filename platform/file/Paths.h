// Parts of path texts. The separator is "/".
#pragma once

#include "platform/base/Types.h"

// The extension with its dot: the last dot after the last separator, and what follows it. Without one, or
// with a blank after the dot, the text's end. Null for null.
VL_PLATFORM_API WCHAR* PathFindExtensionW(const WCHAR* path);

// Compares two terminated texts without regard to the case of ASCII letters: below 0, 0 or above 0.
VL_PLATFORM_API int lstrcmpiW(const WCHAR* a, const WCHAR* b);
