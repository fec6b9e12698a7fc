#include "capi/Languages.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr Language kLanguages[] = {
    {"de", 1031},    {"de-DE", 1031}, {"en", 1033},    {"en-GB", 2057}, {"en-US", 1033}, {"es", 1034},
    {"es-ES", 1034}, {"fr", 1036},    {"fr-FR", 1036}, {"it", 1040},    {"it-IT", 1040}, {"ja", 1041},
    {"ja-JP", 1041}, {"nl", 1043},    {"nl-NL", 1043}, {"pt", 1046},    {"pt-BR", 1046},
};

// By the letters of ASCII alone: a host's locale may have other pairs.
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; }

}  // namespace

std::span<const Language> Languages() { return kLanguages; }

uint16_t FindLanguage(std::string_view tag) {
    for (const Language& language : kLanguages) {
        const std::string_view known(language.tag);
        if (std::equal(known.begin(), known.end(), tag.begin(), tag.end(),
                       [](char a, char b) { return Lower(a) == Lower(b); }))
            return language.id;
    }
    return 0;
}

uint16_t FindNearestLanguage(std::string_view tag) {
    const uint16_t id = ParseLanguage(tag);
    return id != 0 ? id : FindLanguage(tag.substr(0, tag.find_first_of("-_")));
}

uint16_t ParseLanguage(std::string_view text) {
    uint16_t id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    return error == std::errc() && end == text.data() + text.size() ? id : FindLanguage(text);
}
