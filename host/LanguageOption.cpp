#include "host/LanguageOption.h"

#include <fmt/format.h>
#include <charconv>

#include "capi/Languages.h"
#include "host/Failure.h"
#include "host/Report.h"

uint32_t ParseLanguage(const std::string& text) {
    uint16_t id = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id);
    if (error == std::errc() && stop == end) return id;
    if (const uint16_t listed = FindLanguage(text)) return listed;
    std::string known;
    for (const Language& language : Languages())
        known += (known.empty() ? "" : ", ") + std::string(language.tag);
    throw UsageFailure(fmt::format("The language \"{}\" is unknown; use a platform language id or one of {}.",
                                   Report::Printable(text), known));
}
