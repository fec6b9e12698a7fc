// The languages in which the module has texts, by the tags that programs know (BCP 47) and the platform's
// numbers.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

struct Language {
    const char* tag;
    uint16_t id;
};

std::span<const Language> Languages();
// The number of a tag in either case of letters; 0 for one that isn't listed.
uint16_t FindLanguage(std::string_view tag);
// That of a tag or a number, but with a region that isn't listed ("de-AT") the language alone counts.
uint16_t FindNearestLanguage(std::string_view tag);
// The number of a tag, or the decimal number of a language, which is taken as it is; 0 for anything else.
uint16_t ParseLanguage(std::string_view text);
