#include "host/base/Endings.h"

#include <strings.h>

#include <algorithm>

bool HasEnding(const std::filesystem::path& path, std::span<const char* const> endings) {
    const std::string ending = path.extension().string();
    return std::any_of(endings.begin(), endings.end(),
                       [&](const char* known) { return strcasecmp(ending.c_str(), known) == 0; });
}
