// The languages that the module has texts in, by the tags that users write.
#pragma once

#include <cstdint>
#include <string>

// The platform language id of a tag in any case ("fr", "pt-BR") or of a decimal id, which is taken as it is.
// Throws a UsageFailure that names the known tags.
uint32_t ParseLanguage(const std::string& text);
