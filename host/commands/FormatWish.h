// The format that the user asks for among those that can be written.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "capi/vlwav.hpp"

// What is missing follows from the source.
struct FormatWish {
    std::optional<uint32_t> index;  // alone
    std::optional<uint32_t> rate, channels, bits;
};

// Puts the wish into what a conversion is to do. Throws a UsageFailure that names the possible values where
// no format fulfils it.
void ApplyWish(const FormatWish& wish, const std::vector<vlw::StockFormat>& formats,
               vlw::Conversion& conversion);
