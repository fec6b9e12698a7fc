#include "host/Languages.h"

#include <fmt/format.h>
#include <strings.h>

#include <charconv>

#include "host/Failure.h"
#include "host/Report.h"

namespace {

struct Language {
    const char* tag;
    uint16_t id;
};
constexpr Language kLanguages[] = {
    {"de", 1031},    {"de-DE", 1031}, {"en", 1033},    {"en-GB", 2057}, {"en-US", 1033}, {"es", 1034},
    {"es-ES", 1034}, {"fr", 1036},    {"fr-FR", 1036}, {"it", 1040},    {"it-IT", 1040}, {"ja", 1041},
    {"ja-JP", 1041}, {"nl", 1043},    {"nl-NL", 1043}, {"pt", 1046},    {"pt-BR", 1046},
};

}  // namespace

uint32_t ParseLanguage(const std::string& text) {
    uint16_t id = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id);
    if (error == std::errc() && stop == end) return id;
    std::string known;
    for (const Language& language : kLanguages) {
        if (strcasecmp(language.tag, text.c_str()) == 0) return language.id;
        known += (known.empty() ? "" : ", ") + std::string(language.tag);
    }
    throw UsageFailure(fmt::format("The language \"{}\" is unknown; use a platform language id or one of {}.",
                                   Report::Printable(text), known));
}
