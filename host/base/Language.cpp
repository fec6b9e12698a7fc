#include "host/base/Language.h"

#include <algorithm>
#include <cstdlib>

std::string UserLanguage() {
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const value = std::getenv(name);
        if (!value || !*value) continue;
        std::string tag = value;
        tag.resize(std::min(tag.size(), tag.find_first_of(".@")));  // "de_AT.UTF-8@euro"
        std::replace(tag.begin(), tag.end(), '_', '-');
        return tag == "C" || tag == "POSIX" ? "" : tag;
    }
    return "";
}
